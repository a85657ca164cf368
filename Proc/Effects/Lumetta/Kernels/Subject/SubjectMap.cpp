#include "Proc/Effects/Lumetta/Kernels/Subject/SubjectMap.h"

#include <algorithm>

namespace Velnor::Proc::Kernels {
namespace {

constexpr float LIKELY = 0.5F;
constexpr float SURE = 0.95F;   ///< From here on of the subject, and below the rest to 1 not.
constexpr float DOUBTED = 0.8F; ///< Below, and above the rest to 1, there is more doubt than along an outline.

/// Where the middle of a pixel lies among the `count` values of a line: two neighbours, and the second's share.
struct Place {
    Place(std::size_t at, std::size_t pixels, std::size_t count) {
        float const exact =
            (static_cast<float>(at) + 0.5F) * static_cast<float>(count) / static_cast<float>(pixels) - 0.5F;
        float const inside = std::clamp(exact, 0.0F, static_cast<float>(count - 1));
        first = static_cast<std::size_t>(inside);
        second = std::min(first + 1, count - 1);
        share = inside - static_cast<float>(first);
    }
    std::size_t first, second;
    float share;
};

} // namespace

bool SubjectMap::HasSubject() const {
    return std::ranges::any_of(values, [](float value) { return value > LIKELY; });
}

double SubjectMap::GetDoubt() const {
    auto const likely = std::ranges::count_if(values, [](float value) { return value > LIKELY; });
    auto const doubted =
        std::ranges::count_if(values, [](float value) { return value > 1 - DOUBTED && value < DOUBTED; });
    return likely == 0 ? 100 : std::min(100.0, 100.0 * static_cast<double>(doubted) / static_cast<double>(likely));
}

std::vector<Stroke> MarkSubject(SubjectMap const& map, std::size_t width, std::size_t height) {
    std::vector<Place> columns;
    for (std::size_t x = 0; x < width; ++x) columns.emplace_back(x, width, map.width);
    std::vector<Stroke> marks;
    marks.reserve(width * height);
    for (std::size_t y = 0; y < height; ++y) {
        Place const row(y, height, map.height);
        float const* const upper = map.values.data() + row.first * map.width;
        float const* const lower = map.values.data() + row.second * map.width;
        for (Place const& at : columns) {
            float const above = upper[at.first] + at.share * (upper[at.second] - upper[at.first]);
            float const below = lower[at.first] + at.share * (lower[at.second] - lower[at.first]);
            float const value = above + row.share * (below - above);
            marks.push_back(value >= SURE ? Stroke::Subject : value <= 1 - SURE ? Stroke::Background : Stroke::None);
        }
    }
    return marks;
}

} // namespace Velnor::Proc::Kernels
