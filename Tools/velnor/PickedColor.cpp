#include "Tools/velnor/PickedColor.h"

#include "Proc/Interfaces/SettingsText.h"
#include "Tools/velnor/Conversion.h"
#include "Tools/velnor/Failure.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Velnor::Tool {
namespace {

PickedPlace::Length ParseLength(std::string_view text) {
    bool const isPercentage = text.ends_with('%');
    if (isPercentage) text.remove_suffix(1);
    return {Proc::TextForm<double>::Parse(text), isPercentage};
}

/// The column or row of a place; -1 outside.
std::int64_t Resolve(PickedPlace::Length const& length, std::uint32_t side) {
    double const at = length.isPercentage ? length.value / 100.0 * (side - 1.0) : length.value;
    return at >= 0 && at < side ? static_cast<std::int64_t>(at) : -1;
}

/// From the whole chroma sample at or before `centre - radius` on, to `centre + radius` at most.
struct Span {
    std::uint32_t begin;
    std::uint32_t length;
};
Span CutSpan(std::int64_t centre, std::int64_t radius, std::uint32_t side, unsigned int shift) {
    auto const begin = static_cast<std::uint32_t>(std::max<std::int64_t>(0, centre - radius)) >> shift << shift;
    auto const end = static_cast<std::uint32_t>(std::min<std::int64_t>(side, centre + radius + 1));
    return {begin, end - begin};
}

} // namespace

PickedPlace ParsePickedPlace(std::string_view text) {
    std::size_t const comma = text.find(',');
    if (comma == std::string_view::npos)
        Proc::Details::ThrowText("\"" + std::string(text) + "\" is no place such as 120,80 or 30%,50%");
    return {ParseLength(text.substr(0, comma)), ParseLength(text.substr(comma + 1)), std::string(text)};
}

Proc::Color PickColor(Proc::IDataVideo const& picture, PickedPlace const& place, Proc::IEffectFactory& factory) {
    Proc::FrameFormat const& frame = picture.GetFrameFormat();
    std::int64_t const x = Resolve(place.x, frame.width);
    std::int64_t const y = Resolve(place.y, frame.height);
    if (x < 0 || y < 0)
        throw WrongCall("at: " + place.text + " lies outside of the picture, which is " + std::to_string(frame.width) +
                        " x " + std::to_string(frame.height) + " pixels");
    auto const radius =
        std::max<std::int64_t>(2, std::lround(0.005 * static_cast<double>(std::min(frame.width, frame.height))));
    PixFmtDescription const& format = picture.GetDescription();
    Span const across = CutSpan(x, radius, frame.width, format.chromaShiftX);
    Span const down = CutSpan(y, radius, frame.height, format.chromaShiftY);
    Proc::DataHandle part = picture.MakePart({across.begin, down.begin, across.length, down.length});
    Convert(part, {PixFmt::RGB24}, factory);

    Proc::ConstPlane const plane = Proc::AsVideo(Proc::ConstDataHandle(part)).GetPlane(0);
    std::array<std::uint64_t, 3> sums{};
    std::uint64_t count = 0;
    for (std::uint32_t row = 0; row < down.length; ++row)
        for (std::uint32_t column = 0; column < across.length; ++column) {
            std::int64_t const dx = across.begin + column - x;
            std::int64_t const dy = down.begin + row - y;
            if (dx * dx + dy * dy > radius * radius) continue;
            for (std::size_t i = 0; i < 3; ++i) sums[i] += plane.GetRow(row)[3 * column + i];
            ++count;
        }
    auto const mean = [&](std::size_t i) { return static_cast<unsigned char>((sums[i] + count / 2) / count); };
    return {mean(2), mean(1), mean(0), 255};
}

} // namespace Velnor::Tool
