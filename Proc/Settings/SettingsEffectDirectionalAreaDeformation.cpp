#include "Proc/Settings/SettingsEffectDirectionalAreaDeformation.h"

namespace Velnor::Proc {
namespace {

[[noreturn]] void ThrowStroke(std::string_view text) {
    Details::ThrowText("has \"" + std::string(text) + "\", which is no stroke; a stroke is X,Y>X,Y, as in 10,10>60,10");
}

struct Point {
    int x, y;
};

Point ParsePoint(std::string_view text, std::string_view stroke) {
    std::vector<std::string_view> const parts = Details::SplitList(text, ',');
    if (parts.size() != 2) ThrowStroke(stroke);
    return {TextForm<int>::Parse(parts[0]), TextForm<int>::Parse(parts[1])};
}

} // namespace

std::vector<PushStroke> TextForm<std::vector<PushStroke>>::Parse(std::string_view text) {
    std::vector<PushStroke> strokes;
    for (std::string_view const part : Details::SplitList(text, ';')) {
        std::vector<std::string_view> const ends = Details::SplitList(part, '>');
        if (ends.size() != 2) ThrowStroke(part);
        Point const from = ParsePoint(ends[0], part);
        Point const to = ParsePoint(ends[1], part);
        strokes.push_back({from.x, from.y, to.x, to.y});
    }
    return strokes;
}

std::string TextForm<std::vector<PushStroke>>::Print(std::vector<PushStroke> const& strokes) {
    std::string text;
    for (PushStroke const& stroke : strokes)
        text += (text.empty() ? "" : ";") + std::to_string(stroke.fromX) + "," + std::to_string(stroke.fromY) + ">" +
                std::to_string(stroke.toX) + "," + std::to_string(stroke.toY);
    return text;
}

} // namespace Velnor::Proc
