#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of Inversion.
class VELNOR_API SettingsEffectInversion final : public SettingsOf<SettingsEffectInversion> {
    VELNOR_SETTINGS(SettingsEffectInversion, "Turns colours into their opposites.")
    VELNOR_FIELD(int, White, 255, "what black becomes", Range(0, 255))
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
