#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of FaceThinning, and how many faces it found.
class VELNOR_API SettingsEffectFaceThinning final : public SettingsOf<SettingsEffectFaceThinning> {
public:
    VELNOR_SETTINGS(SettingsEffectFaceThinning, "Slims every face along the jaw.")
    VELNOR_FIELD(double, Strength, 40.0, "how much they are slimmed", Unit("%"), Range(0, 100), AcceptsRange())
    VELNOR_FIELD(int, FacesFound, 0, "faces found in the last picture; without one it is not changed", Output())
    VELNOR_SETTINGS_END

    bool IsEmpty() const override { return Settings::IsEmpty() || valueStrength == 0; }
};

} // namespace Velnor::Proc
