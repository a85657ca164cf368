#include "Proc/Effects/General/Kernels/PaletteRows.h"

#include "Proc/Effects/Kit/ByteTables.h"

#include <algorithm>
#include <cstring>

namespace Velnor::Proc::Kernels {
namespace {

void LookUpBytes(ConstPlane const& indices, unsigned char const* samples, MutablePlane const& target) {
    Table table;
    std::copy_n(samples, table.size(), table.begin());
    MapBytes(indices, target, {&table, 1}, 1);
}

template <unsigned int Bytes>
void LookUpRows(ConstPlane const& indices, unsigned char const* samples, MutablePlane const& target) {
    for (std::uint64_t y = 0; y < indices.GetHeight(); ++y) {
        unsigned char const* const from = indices.GetRow(y);
        unsigned char* to = target.GetRow(y);
        for (std::uint64_t x = 0; x < indices.GetWidth(); ++x, to += Bytes)
            std::memcpy(to, samples + std::size_t{from[x]} * Bytes, Bytes);
    }
}

} // namespace

void LookUpSamples(ConstPlane const& indices, unsigned char const* samples, unsigned int bytes,
                   MutablePlane const& target) {
    switch (bytes) {
    case 1:
        return LookUpBytes(indices, samples, target);
    case 2:
        return LookUpRows<2>(indices, samples, target);
    case 3:
        return LookUpRows<3>(indices, samples, target);
    default:
        return LookUpRows<4>(indices, samples, target);
    }
}

} // namespace Velnor::Proc::Kernels
