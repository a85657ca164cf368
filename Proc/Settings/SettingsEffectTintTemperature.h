#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of TintTemperature. Any value is taken; components are clamped to 0..255.
class VELNOR_API SettingsEffectTintTemperature final : public SettingsOf<SettingsEffectTintTemperature> {
    VELNOR_SETTINGS(SettingsEffectTintTemperature, "Makes the picture warmer or cooler, greener or more magenta.")
    VELNOR_FIELD(int, Temperature, 0, "warmth: positive adds red and takes blue, negative the reverse", Unit("levels"),
                 Range(-255, 255), Example("20"))
    VELNOR_FIELD(int, Tint, 0, "positive adds green, negative takes it", Unit("levels"), Range(-255, 255),
                 Example("-8"))
    VELNOR_SETTINGS_END

    bool IsEmpty() const override { return Settings::IsEmpty() || (valueTemperature == 0 && valueTint == 0); }
};

} // namespace Velnor::Proc
