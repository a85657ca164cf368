#include "Proc/Effects/Kit/ByteTables.h"

#include "Proc/Effects/Kit/ByteTablesX86.h"
#include "Proc/Interfaces/FrameFormat.h"
#include "Proc/Interfaces/ProcException.h"

#include <algorithm>
#include <string>

namespace Velnor::Proc::Kernels {
namespace {

void Check(ConstPlane const& source, MutablePlane const& target, std::size_t tablesCount, unsigned int pixelBytes) {
    using std::to_string;
    if (pixelBytes < 1 || pixelBytes > 4)
        VELNOR_THROW(ProcException, "pixels of " + to_string(pixelBytes) + " bytes cannot be mapped: 1 to 4 can");
    if (tablesCount < 1 || tablesCount > pixelBytes)
        VELNOR_THROW(ProcException, to_string(tablesCount) + " tables for a pixel of " + to_string(pixelBytes) +
                                        " bytes: give 1 to " + to_string(pixelBytes));
    if (source.GetWidth() != target.GetWidth() || source.GetHeight() != target.GetHeight())
        VELNOR_THROW(ProcException, "a plane of " + to_string(source.GetWidth()) + " bytes x " +
                                        to_string(source.GetHeight()) + " rows cannot be mapped to one of " +
                                        SizeText(target.GetWidth(), target.GetHeight()));
}

constexpr Variants MAP_ROWS{
    Variant{Target::Scalar, &MapBytesScalar},
#ifdef VELNOR_X86
    Variant{Target::Sse4, &Sse4::MapRows},     Variant{Target::Avx2, &Avx2::MapRows},
    Variant{Target::Avx512, &Avx512::MapRows}, Variant{Target::Avx512Vbmi, &Avx512Vbmi::MapRows},
#endif
};

} // namespace

std::vector<Target> SupportedTargets() { return MAP_ROWS.ListTargets(); }

void MapBytesScalar(ConstPlane const& source, MutablePlane const& target, std::span<Table const> tables,
                    unsigned int pixelBytes) {
    std::uint64_t const wholePixels = source.GetWidth() / pixelBytes;
    for (std::uint64_t y = 0; y < source.GetHeight(); ++y) {
        unsigned char const* from = source.GetRow(y);
        unsigned char* to = target.GetRow(y);
        for (std::uint64_t x = 0; x < wholePixels; ++x, from += pixelBytes, to += pixelBytes)
            for (std::size_t k = 0; k < pixelBytes; ++k) to[k] = k < tables.size() ? tables[k][from[k]] : from[k];
    }
}

void MapBytesWith(Target instructionSet, ConstPlane const& source, MutablePlane const& target,
                  std::span<Table const> tables, unsigned int pixelBytes) {
    Check(source, target, tables.size(), pixelBytes);
    RequireTarget(instructionSet);
    if (source.IsEmpty()) return;
    auto const mapRows = MAP_ROWS.Choose(instructionSet);
    // One table for every byte needs no telling apart of the bytes.
    auto const differs = [&](Table const& table) { return table != tables[0]; };
    if (tables.size() == pixelBytes && pixelBytes > 1 && std::none_of(tables.begin() + 1, tables.end(), differs)) {
        std::uint64_t const whole = source.GetWidth() - source.GetWidth() % pixelBytes;
        mapRows(ConstPlane(source.GetData(), source.GetStride(), whole, source.GetHeight()),
                MutablePlane(target.GetData(), target.GetStride(), whole, target.GetHeight()), tables.first(1), 1);
        return;
    }
    mapRows(source, target, tables, pixelBytes);
}

void MapBytes(ConstPlane const& source, MutablePlane const& target, std::span<Table const> tables,
              unsigned int pixelBytes) {
    MapBytesWith(UsedTarget(), source, target, tables, pixelBytes);
}

} // namespace Velnor::Proc::Kernels
