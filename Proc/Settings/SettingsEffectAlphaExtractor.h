#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the alpha extractor.
class VELNOR_API SettingsEffectAlphaExtractor final : public SettingsOf<SettingsEffectAlphaExtractor> {
    VELNOR_SETTINGS(SettingsEffectAlphaExtractor, "Gives the picture's own alpha as a grey picture.")
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
