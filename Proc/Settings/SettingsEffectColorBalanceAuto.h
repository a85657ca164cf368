#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of ColorBalanceAuto. All is off by default: other effects switch on what they need.
class VELNOR_API SettingsEffectColorBalanceAuto final : public SettingsOf<SettingsEffectColorBalanceAuto> {
    VELNOR_SETTINGS(SettingsEffectColorBalanceAuto, "Corrects colour cast, levels and exposure by the picture itself.")
    VELNOR_FIELD(bool, WhiteBalance, false, "whether each component is stretched to its full range", Example("true"))
    VELNOR_FIELD(bool, LightBalance, false, "whether the levels of the components and the luma are stretched gently",
                 Example("true"))
    VELNOR_FIELD(int, Exposure, 0, "steps of 3 % brighter, or darker when negative", Unit("steps"), Range(-100, 100),
                 Example("10"))
    VELNOR_SETTINGS_END

    bool IsEmpty() const override {
        return Settings::IsEmpty() || (!valueWhiteBalance && !valueLightBalance && valueExposure == 0);
    }
};

} // namespace Velnor::Proc
