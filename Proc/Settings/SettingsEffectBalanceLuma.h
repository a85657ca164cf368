#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of BalanceLuma.
class VELNOR_API SettingsEffectBalanceLuma final : public SettingsOf<SettingsEffectBalanceLuma> {
    VELNOR_SETTINGS(SettingsEffectBalanceLuma, "Lifts the shadows and holds the highlights, local contrast kept.")
    VELNOR_FIELD(double, Shadows, 50.0, "how much dark regions are lifted", Unit("%"), Range(0, 100))
    VELNOR_FIELD(double, Highlights, 30.0, "how much bright regions are held back", Unit("%"), Range(0, 100))
    VELNOR_FIELD(double, Radius, 4.0, "size of what counts as a region", Unit("% of the longer side"), Range(0.5, 20))
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
