#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of Vibrance.
class VELNOR_API SettingsEffectVibrance final : public SettingsOf<SettingsEffectVibrance> {
    VELNOR_SETTINGS(SettingsEffectVibrance, "Raises weak saturation more than strong.")
    VELNOR_FIELD(int, Strength, 0, "how much colourfulness is added, or taken when negative", Unit("%"),
                 Range(-100, 100), Example("50"))
    VELNOR_SETTINGS_END

    bool IsEmpty() const override { return Settings::IsEmpty() || valueStrength == 0; }
};

} // namespace Velnor::Proc
