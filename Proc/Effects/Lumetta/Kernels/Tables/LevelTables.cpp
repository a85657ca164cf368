#include "Proc/Effects/Lumetta/Kernels/Tables/LevelTables.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace Velnor::Proc::Kernels {
namespace {

template <class Function>
Table MakeTable(Function const& function) {
    Table table;
    for (int i = 0; i < 256; ++i) table[static_cast<std::size_t>(i)] = function(i);
    return table;
}

/// Clamped while still a double: the conversion of a huge value is undefined. All values here round away from zero.
unsigned char ToByte(double value) { return static_cast<unsigned char>(std::clamp(value, 0.0, 255.0) + 0.5); }

} // namespace

ClipPair FindClipPair(Histogram const& histogram, std::uint64_t lowCount, std::uint64_t highCount) {
    std::size_t low = 0;
    for (std::uint64_t sum = histogram[low]; sum < lowCount && low < 255;) sum += histogram[++low];
    std::size_t high = 255;
    for (std::uint64_t sum = histogram[high]; sum < highCount && high > 0;) sum += histogram[--high];
    return {static_cast<unsigned char>(low), static_cast<unsigned char>(high)};
}

ClipPair Soften(ClipPair const& pair) {
    return {static_cast<unsigned char>(pair.low / 2), static_cast<unsigned char>(pair.high + (255 - pair.high) / 2)};
}

Table IdentityTable() {
    return MakeTable([](int i) { return static_cast<unsigned char>(i); });
}

Table StretchTable(ClipPair const& pair) {
    if (pair.low == pair.high) return IdentityTable();
    // The product comes before the quotient: a precomputed 255 / (high - low) rounds otherwise in many entries.
    return MakeTable([&](int i) { return ToByte((i - pair.low) * 255.0 / (pair.high - pair.low)); });
}

Table PowerTable(double exponent) {
    return MakeTable([&](int i) { return ToByte(std::pow(i / 255.0, exponent) * 255.0); });
}

Table ExposureTable(int steps) {
    double const up = 1.0 + 0.03 * std::abs(static_cast<double>(steps));
    double const factor = steps < 0 ? 1.0 / up : up;
    return MakeTable([&](int i) { return ToByte(i * factor); });
}

Table OffsetTable(std::int64_t offset) {
    std::int64_t const bounded = std::clamp<std::int64_t>(offset, -255, 255);
    return MakeTable([&](int i) { return static_cast<unsigned char>(std::clamp<std::int64_t>(i + bounded, 0, 255)); });
}

Table Then(Table const& first, Table const& second) {
    return MakeTable([&](int i) { return second[first[static_cast<std::size_t>(i)]]; });
}

} // namespace Velnor::Proc::Kernels
