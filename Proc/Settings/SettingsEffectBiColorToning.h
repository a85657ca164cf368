#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of BiColorToning: the tones, in the order in which split toning takes them.
class VELNOR_API SettingsEffectBiColorToning final : public SettingsOf<SettingsEffectBiColorToning> {
    VELNOR_SETTINGS(SettingsEffectBiColorToning, "Tints the picture with two colours, and makes it more vivid.")
    VELNOR_FIELD(Color, ShadowColor, Color(128, 64, 32, 255), "tone of the shadows; its opacity is its strength")
    VELNOR_FIELD(Color, HighlightColor, Color(64, 160, 224, 255), "tone of the highlights; its opacity is its strength")
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
