#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of EyeExtending, and how many faces it found.
class VELNOR_API SettingsEffectEyeExtending final : public SettingsOf<SettingsEffectEyeExtending> {
public:
    VELNOR_SETTINGS(SettingsEffectEyeExtending, "Enlarges the eyes of every face.")
    VELNOR_FIELD(double, Strength, 40.0, "how much they grow", Unit("%"), Range(0, 100), AcceptsRange())
    VELNOR_FIELD(int, FacesFound, 0, "faces found in the last picture; without one it is not changed", Output())
    VELNOR_SETTINGS_END

    bool IsEmpty() const override { return Settings::IsEmpty() || valueStrength == 0; }
};

} // namespace Velnor::Proc
