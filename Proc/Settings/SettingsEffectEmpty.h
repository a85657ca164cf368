#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of EmptyEffect.
class VELNOR_API SettingsEffectEmpty final : public SettingsOf<SettingsEffectEmpty> {
    VELNOR_SETTINGS(SettingsEffectEmpty, "Leaves the picture as it is.")
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
