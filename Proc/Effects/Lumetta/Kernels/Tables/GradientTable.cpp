#include "Proc/Effects/Lumetta/Kernels/Tables/GradientTable.h"

#include <iterator>

namespace Velnor::Proc::Kernels {
namespace {

constexpr int LEVELS = 256;

Color Between(Color const& from, Color const& to, int step, int steps) {
    auto const component = [&](unsigned int j) {
        return static_cast<unsigned char>(from[j] + step * (to[j] - from[j]) / steps);
    };
    return {component(0), component(1), component(2), component(3)};
}

} // namespace

PaletteTable GradientTable(GradientStops const& given) {
    GradientStops stops = given;
    stops.emplace(0, given.begin()->second);
    stops.emplace(LEVELS, given.rbegin()->second);

    PaletteTable table{};
    for (auto from = stops.begin(), to = std::next(from); to != stops.end(); from = to++) {
        int const steps = to->first - from->first;
        for (int level = from->first; level < to->first && level < LEVELS; ++level) {
            Color const color = Between(from->second, to->second, level - from->first, steps);
            // Palettes are red first, colours are kept blue first.
            unsigned char* const entry = table.data() + 4 * static_cast<std::size_t>(level);
            entry[0] = color[2];
            entry[1] = color[1];
            entry[2] = color[0];
            entry[3] = color[3];
        }
    }
    return table;
}

} // namespace Velnor::Proc::Kernels
