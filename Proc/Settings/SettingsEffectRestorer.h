#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of Restorer.
class VELNOR_API SettingsEffectRestorer final : public SettingsOf<SettingsEffectRestorer> {
    VELNOR_SETTINGS(SettingsEffectRestorer, "Restores an old print: scratches, dust, grain and faded colour.")
    VELNOR_FIELD(int, Scratches, 50, "how faint a scratch or a speck is still taken away; 0 takes none", Unit("%"),
                 Range(0, 100), AcceptsRange())
    VELNOR_FIELD(int, Width, 2, "half-width of the widest scratch", Unit("pixels"), Range(1, 20), Accepts(1, 100))
    VELNOR_FIELD(int, Denoise, 20, "how much grain is smoothed", Unit("%"), Range(0, 100), AcceptsRange())
    VELNOR_FLAG(RecoverColor, true, "whether faded colours are stretched to their full range")
    VELNOR_SETTINGS_END

    bool IsEmpty() const override {
        return Settings::IsEmpty() || (valueScratches == 0 && valueDenoise == 0 && !valueRecoverColor);
    }
};

} // namespace Velnor::Proc
