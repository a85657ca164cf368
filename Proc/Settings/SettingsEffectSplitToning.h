#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of split toning. The two tones come first: other effects hand theirs over in this order.
class VELNOR_API SettingsEffectSplitToning final : public SettingsOf<SettingsEffectSplitToning> {
    VELNOR_SETTINGS(SettingsEffectSplitToning, "Tints the shadows with one colour and the highlights with another.")
    VELNOR_FIELD(Color, ShadowColor, Color(128, 128, 128, 255), "tone of the shadows; its opacity is its strength",
                 Example("#204080"))
    VELNOR_FIELD(Color, HighlightColor, Color(128, 128, 128, 255),
                 "tone of the highlights; its opacity is its strength", Example("#e0a040"))
    VELNOR_SETTINGS_END

    /// Grey or clear tones tint nothing.
    bool IsEmpty() const override {
        return Settings::IsEmpty() || (IsNeutral(valueShadowColor) && IsNeutral(valueHighlightColor));
    }

private:
    static bool IsNeutral(Color const& tone) {
        return tone.GetOpacity() == 0 || (tone[0] == tone[1] && tone[1] == tone[2]);
    }
};

} // namespace Velnor::Proc
