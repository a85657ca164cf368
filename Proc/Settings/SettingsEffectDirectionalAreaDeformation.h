#pragma once

#include "Proc/Interfaces/PushStroke.h"
#include "Proc/Interfaces/SettingsFields.h"

#include <vector>

namespace Velnor::Proc {

/// X,Y>X,Y, strokes separated by semicolons. Empty text is no stroke.
template <>
struct VELNOR_API TextForm<std::vector<PushStroke>> {
    static constexpr std::string_view TYPE = "strokes";
    static std::vector<PushStroke> Parse(std::string_view text);
    static std::string Print(std::vector<PushStroke> const& strokes);
};

/// Settings of DirectionalAreaDeformation: a stroke of a push brush, and any number of others after it that share its
/// size and strength. A stroke without length and a brush without size touch nothing.
class VELNOR_API SettingsEffectDirectionalAreaDeformation final
    : public SettingsOf<SettingsEffectDirectionalAreaDeformation> {
    VELNOR_SETTINGS(SettingsEffectDirectionalAreaDeformation, "Pushes part of the picture along a stroke.")
    VELNOR_FIELD(int, FromX, 0, "start of the stroke, from the left", Unit("pixels"))
    VELNOR_FIELD(int, FromY, 0, "start of the stroke, from the top", Unit("pixels"))
    VELNOR_FIELD(int, ToX, 0, "end of the stroke, from the left", Unit("pixels"))
    VELNOR_FIELD(int, ToY, 0, "end of the stroke, from the top", Unit("pixels"))
    VELNOR_FIELD(int, Size, 100, "diameter of the brush", Unit("pixels"), Range(0, 10000), AcceptsFrom(0))
    VELNOR_FIELD(double, Strength, 50.0, "how strongly the brush pushes", Unit("%"), Range(0, 1000), AcceptsFrom(0))
    VELNOR_FIELD(std::vector<PushStroke>, Strokes, {}, "more strokes, done one after the other: X,Y>X,Y;X,Y>X,Y",
                 Unit("pixels"), Example("10,10>60,10;10,40>60,40"))
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
