#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of AutoGlareRemove.
class VELNOR_API SettingsEffectAutoGlareRemove final : public SettingsOf<SettingsEffectAutoGlareRemove> {
    VELNOR_SETTINGS(SettingsEffectAutoGlareRemove, "Finds glare, as on skin and glass, and rebuilds what it hides.")
    VELNOR_FIELD(double, Strength, 80.0, "how much of the glare is taken away", Unit("%"), Range(0, 100),
                 AcceptsRange())
    VELNOR_FIELD(double, Threshold, 78.0, "brightness from which a spot may be glare", Unit("%"), Range(10, 100),
                 Accepts(0, 100))
    VELNOR_FIELD(double, Size, 4.0, "largest spots that are glare", Unit("% of the shorter side"), Range(0.2, 20),
                 Accepts(0, 100))
    VELNOR_SETTINGS_END

    bool IsEmpty() const override { return Settings::IsEmpty() || valueStrength == 0; }
};

} // namespace Velnor::Proc
