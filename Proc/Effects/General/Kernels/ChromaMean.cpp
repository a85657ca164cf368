#include "Proc/Effects/General/Kernels/ChromaMean.h"

#include "Proc/Interfaces/FrameFormat.h"
#include "Proc/Interfaces/ProcException.h"

#include <algorithm>
#include <string>
#include <vector>

namespace Velnor::Proc::Kernels {
namespace {

std::uint64_t Shrink(std::uint64_t size, unsigned int shift) { return (size + (1U << shift) - 1) >> shift; }

/// Means of whole cells of 2^Shift columns; `area` is a power of two.
template <unsigned int Shift>
void MeanOfColumns(std::uint16_t const* sums, unsigned char* target, std::uint64_t cells, unsigned int area) {
    for (std::uint64_t x = 0; x < cells; ++x) {
        unsigned int sum = area / 2;
        for (unsigned int i = 0; i < (1U << Shift); ++i) sum += sums[(x << Shift) + i];
        target[x] = static_cast<unsigned char>(sum / area);
    }
}

/// One row of means from the sums of `rows` rows.
void MeanOfSums(std::vector<std::uint16_t> const& sums, unsigned char* target, unsigned int shiftX, unsigned int rows) {
    std::uint64_t const whole = sums.size() >> shiftX;
    unsigned int const area = rows << shiftX;
    if (shiftX == 0) MeanOfColumns<0>(sums.data(), target, whole, area);
    if (shiftX == 1) MeanOfColumns<1>(sums.data(), target, whole, area);
    if (shiftX == 2) MeanOfColumns<2>(sums.data(), target, whole, area);
    std::uint64_t const done = whole << shiftX;
    if (done == sums.size()) return;
    unsigned int sum = 0;
    for (std::uint64_t x = done; x < sums.size(); ++x) sum += sums[x];
    auto const rest = static_cast<unsigned int>(sums.size() - done) * rows;
    target[whole] = static_cast<unsigned char>((sum + rest / 2) / rest);
}

} // namespace

void MeanOverChroma(ConstPlane const& source, MutablePlane const& target, unsigned int shiftX, unsigned int shiftY) {
    if (target.GetWidth() != Shrink(source.GetWidth(), shiftX) ||
        target.GetHeight() != Shrink(source.GetHeight(), shiftY))
        VELNOR_THROW(ProcException, "A plane of " + SizeText(source.GetWidth(), source.GetHeight()) +
                                        " samples has no means of " + SizeText(target.GetWidth(), target.GetHeight()) +
                                        ".");
    if (shiftX == 0 && shiftY == 0) return CopyPlane(source, target);
    std::vector<std::uint16_t> sums(source.GetWidth());
    for (std::uint64_t y = 0; y < target.GetHeight(); ++y) {
        std::uint64_t const top = y << shiftY;
        std::uint64_t const bottom = std::min(source.GetHeight(), top + (std::uint64_t{1} << shiftY));
        std::ranges::fill(sums, std::uint16_t{0});
        for (std::uint64_t row = top; row < bottom; ++row) {
            unsigned char const* const from = source.GetRow(row);
            for (std::uint64_t x = 0; x < sums.size(); ++x) sums[x] = static_cast<std::uint16_t>(sums[x] + from[x]);
        }
        MeanOfSums(sums, target.GetRow(y), shiftX, static_cast<unsigned int>(bottom - top));
    }
}

} // namespace Velnor::Proc::Kernels
