#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of ReplaceChroma. The lightness of neither colour matters, and their opacity is not used.
class VELNOR_API SettingsEffectReplaceChroma final : public SettingsOf<SettingsEffectReplaceChroma> {
    VELNOR_SETTINGS(SettingsEffectReplaceChroma, "Gives what has a key colour another hue and saturation, luma kept.")
    VELNOR_FIELD(Color, KeyColor, Color(40, 40, 200, 255), "colour that is replaced")
    VELNOR_FIELD(Color, NewColor, Color(200, 90, 30, 255), "colour that comes in its place")
    VELNOR_FIELD(double, Tolerance, 25.0, "how far from the key colour is replaced in full", Unit("%"), Range(0, 100))
    VELNOR_FIELD(double, Softness, 25.0, "width of the fade beyond the tolerance", Unit("%"), Range(0, 100))
    VELNOR_FIELD(double, Strength, 100.0, "part of the change", Unit("%"), Range(0, 100))
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
