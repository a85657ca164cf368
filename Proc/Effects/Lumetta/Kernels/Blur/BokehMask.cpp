#include "Proc/Effects/Lumetta/Kernels/Blur/BokehMask.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Velnor::Proc::Kernels {
namespace {

constexpr double PERCENTILE = 0.05;
constexpr int KNEE_LIMIT = 1 << 20; ///< Far outside the levels, and small enough to count from.

int FindDark(Histogram const& levels, std::uint64_t count) {
    std::uint64_t reached = 0;
    for (int level = 0; level < 255; ++level)
        if ((reached += levels[static_cast<std::size_t>(level)]) >= count) return level;
    return 255;
}

int FindBright(Histogram const& levels, std::uint64_t count) {
    std::uint64_t reached = 0;
    for (int level = 255; level > 0; --level)
        if ((reached += levels[static_cast<std::size_t>(level)]) >= count) return level;
    return 0;
}

} // namespace

int TruncateToInt(double value) {
    using Limits = std::numeric_limits<int>;
    if (std::isnan(value)) return 0;
    return static_cast<int>(std::clamp(value, static_cast<double>(Limits::min()), static_cast<double>(Limits::max())));
}

Table MakeBokehMask(Histogram const& levels, std::uint32_t pixels, double threshold, double strength) {
    auto const count = static_cast<std::uint64_t>(static_cast<double>(pixels) * PERCENTILE);
    int const dark = FindDark(levels, count);
    int const bright = FindBright(levels, count);
    int const rise = TruncateToInt(std::round(threshold * (bright - dark)));
    int const knee = dark + std::clamp(rise, -KNEE_LIMIT, KNEE_LIMIT);

    Table table;
    table.fill(255);
    if (knee >= bright) return table;
    int const end = TruncateToInt(255 - strength * 255) & 255;
    int fall = 0;
    for (int level = knee; level <= 255; ++level, fall += end - 255)
        if (level >= 0)
            table[static_cast<std::size_t>(level)] =
                static_cast<unsigned char>(std::clamp(fall / (bright - knee) + 255, 0, 255));
    return table;
}

} // namespace Velnor::Proc::Kernels
