#include "Proc/Effects/Photo/LargestRectangle.h"

#include <vector>

namespace Velnor::Proc {
namespace {

/// Columns from `x` on are at least `height` high, above the current row.
struct Step {
    std::uint32_t x, height;
};

std::uint64_t Area(Rectangle const& rectangle) { return std::uint64_t{rectangle.width} * rectangle.height; }

} // namespace

Rectangle FindLargestRectangle(ConstPlane const& mask) {
    auto const width = static_cast<std::uint32_t>(mask.GetWidth());
    std::vector<std::uint32_t> heights(width + 1, 0); // The last ends every step.
    std::vector<Step> steps;
    Rectangle best{0, 0, 0, 0};
    for (std::uint32_t y = 0; y < mask.GetHeight(); ++y) {
        unsigned char const* const row = mask.GetRow(y);
        for (std::uint32_t x = 0; x <= width; ++x) {
            if (x < width) heights[x] = row[x] != 0 ? heights[x] + 1 : 0;
            std::uint32_t first = x;
            for (; !steps.empty() && steps.back().height >= heights[x]; steps.pop_back()) {
                first = steps.back().x;
                std::uint32_t const height = steps.back().height;
                Rectangle const found{first, y + 1 - height, x - first, height};
                if (Area(found) > Area(best)) best = found;
            }
            if (heights[x] != 0) steps.push_back({first, heights[x]});
        }
    }
    return best;
}

} // namespace Velnor::Proc
