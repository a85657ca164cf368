#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the oil painting.
class VELNOR_API SettingsEffectOilPaint final : public SettingsOf<SettingsEffectOilPaint> {
    VELNOR_SETTINGS(SettingsEffectOilPaint, "Gives the picture the look of an oil painting.")
    VELNOR_FIELD(double, Radius, 3.0, "radius of the brush; 0 leaves the picture alone", Unit("pixels"), Range(0, 20))
    VELNOR_SETTINGS_END

    bool IsEmpty() const override { return Settings::IsEmpty() || valueRadius <= 0; }
};

} // namespace Velnor::Proc
