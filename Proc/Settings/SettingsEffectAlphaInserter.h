#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the alpha inserter.
class VELNOR_API SettingsEffectAlphaInserter final : public SettingsOf<SettingsEffectAlphaInserter> {
    VELNOR_SETTINGS(SettingsEffectAlphaInserter, "Takes a second, grey picture as the opacity of the first.")
    static constexpr std::array PICTURES{PictureRole::Photograph, PictureRole::Mask};
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
