#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the midway equalisation of two pictures.
class VELNOR_API SettingsEffectMidEqualizer final : public SettingsOf<SettingsEffectMidEqualizer> {
    VELNOR_SETTINGS(SettingsEffectMidEqualizer,
                    "Brings the picture's levels half-way to a second picture's, so that the two match.")
    VELNOR_FIELD(double, Strength, 100.0, "how far: 100 is the midway of the two", Unit("%"), Range(0, 100),
                 AcceptsRange())
    VELNOR_SETTINGS_END

    bool IsEmpty() const override { return Settings::IsEmpty() || valueStrength == 0; }
};

} // namespace Velnor::Proc
