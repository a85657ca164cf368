#include "Proc/Effects/Lumetta/Kernels/Style/Scratches.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace Velnor::Proc::Kernels {
namespace {

constexpr int REACH = 12;       ///< Pixels of a scratch on each side.
constexpr int SPECK_REACH = 7;  ///< The surroundings of a speck.
constexpr int SPECK_SHARE = 12; ///< Percent of them that may stand out.

struct Direction {
    int x;
    int y;
};
constexpr std::array<Direction, 4> DIRECTIONS{{{1, 0}, {0, 1}, {1, 1}, {1, -1}}};

/// Which pixels stand out, and how many in each rectangle from the origin.
struct Standing {
    Standing(ConstPlane const& thin, int threshold)
        : width(static_cast<int>(thin.GetWidth())),
          height(static_cast<int>(thin.GetHeight())),
          flags(thin.GetWidth() * thin.GetHeight()),
          sums((thin.GetWidth() + 1) * (thin.GetHeight() + 1)) {
        for (int y = 0; y < height; ++y) {
            unsigned char const* const row = thin.GetRow(static_cast<std::uint64_t>(y));
            std::uint32_t count = 0;
            for (int x = 0; x < width; ++x) {
                flags[Index(x, y)] = row[x] >= threshold;
                count += row[x] >= threshold ? 1 : 0;
                sums[SumIndex(x + 1, y + 1)] = sums[SumIndex(x + 1, y)] + count;
            }
        }
    }

    bool Has(int x, int y) const { return flags[Index(x, y)] != 0; }
    bool IsInside(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height; }

    bool IsOnScratch(int x, int y) const {
        return std::ranges::any_of(DIRECTIONS, [&](Direction direction) {
            int inside = 0;
            int standing = 0;
            for (int i = -REACH; i <= REACH; ++i) {
                int const u = x + i * direction.x;
                int const v = y + i * direction.y;
                if (!IsInside(u, v)) continue;
                ++inside;
                standing += Has(u, v) ? 1 : 0;
            }
            return inside > REACH && standing * 4 >= inside * 3;
        });
    }

    bool IsAlone(int x, int y) const {
        int const left = std::max(x - SPECK_REACH, 0);
        int const top = std::max(y - SPECK_REACH, 0);
        int const right = std::min(x + SPECK_REACH + 1, width);
        int const bottom = std::min(y + SPECK_REACH + 1, height);
        auto const count = sums[SumIndex(right, bottom)] - sums[SumIndex(left, bottom)] - sums[SumIndex(right, top)] +
                           sums[SumIndex(left, top)];
        return static_cast<int>(count) * 100 <= SPECK_SHARE * (right - left) * (bottom - top);
    }

private:
    std::size_t Index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    }
    std::size_t SumIndex(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width + 1) + static_cast<std::size_t>(x);
    }

    int width;
    int height;
    std::vector<unsigned char> flags;
    std::vector<std::uint32_t> sums;
};

} // namespace

void MarkDamage(MutablePlane const& thin, int threshold) {
    Standing const standing(thin, threshold);
    for (std::uint64_t y = 0; y < thin.GetHeight(); ++y) {
        unsigned char* const row = thin.GetRow(y);
        for (std::uint64_t x = 0; x < thin.GetWidth(); ++x) {
            int const u = static_cast<int>(x);
            int const v = static_cast<int>(y);
            bool const isDamaged = standing.Has(u, v) &&
                                   (standing.IsOnScratch(u, v) || (row[x] >= 2 * threshold && standing.IsAlone(u, v)));
            row[x] = isDamaged ? 0 : 255;
        }
    }
}

} // namespace Velnor::Proc::Kernels
