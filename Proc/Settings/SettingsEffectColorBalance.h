#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the colour balance.
class VELNOR_API SettingsEffectColorBalance final : public SettingsOf<SettingsEffectColorBalance> {
    VELNOR_SETTINGS(SettingsEffectColorBalance, "Changes brightness and gamma.")
    VELNOR_FIELD(int, Gamma, 0, "brightens the middle tones, or darkens them when negative", Unit("%"),
                 Range(-200, 200), Example("20"))
    VELNOR_FIELD(int, Brightness, 0, "added to every level after the gamma", Unit("levels"), Range(-255, 255),
                 Example("10"))
    VELNOR_SETTINGS_END

    bool IsEmpty() const override { return Settings::IsEmpty() || (valueGamma == 0 && valueBrightness == 0); }
};

} // namespace Velnor::Proc
