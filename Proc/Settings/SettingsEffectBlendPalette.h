#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of BlendPalette.
class VELNOR_API SettingsEffectBlendPalette final : public SettingsOf<SettingsEffectBlendPalette> {
    VELNOR_SETTINGS(SettingsEffectBlendPalette, "Gives the picture the colour palette of a second picture.")
    VELNOR_FIELD(double, Strength, 100.0, "part of the change", Unit("%"), Range(0, 100))
    VELNOR_FIELD(bool, KeepLuma, false, "whether luma stays as it is, so that hue and saturation alone change")
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
