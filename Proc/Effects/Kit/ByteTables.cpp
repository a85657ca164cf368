#include "Proc/Effects/Kit/ByteTables.h"

#include "Proc/Effects/Kit/ByteTablesX86.h"
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
                                        to_string(target.GetWidth()) + " x " + to_string(target.GetHeight()));
}

#ifdef VELNOR_BYTE_TABLES_X86
constexpr std::array CODED{Target::Scalar, Target::Sse4, Target::Avx2, Target::Avx512, Target::Avx512Vbmi};

auto FindEntry(Target target) {
    switch (target) {
    case Target::Scalar:
    case Target::Sse2:
    case Target::Ssse3:
        break;
    case Target::Sse4:
        return Sse4::MapRows;
    case Target::Avx2:
        return Avx2::MapRows;
    case Target::Avx512:
        return Avx512::MapRows;
    case Target::Avx512Vbmi:
        return Avx512Vbmi::MapRows;
    }
    return MapBytesScalar;
}
#else
constexpr std::array CODED{Target::Scalar};
auto FindEntry(Target) { return MapBytesScalar; }
#endif

} // namespace

std::vector<Target> SupportedTargets() {
    std::vector<Target> targets(CODED.begin(), CODED.end());
    std::erase_if(targets, [](Target target) { return !HasTarget(target); });
    return targets;
}

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
    if (!HasTarget(instructionSet))
        VELNOR_THROW(ProcException, "kernels may not use " + std::string(GetTargetName(instructionSet)));
    if (source.IsEmpty()) return;
    // One table for every byte needs no telling apart of the bytes.
    auto const differs = [&](Table const& table) { return table != tables[0]; };
    if (tables.size() == pixelBytes && pixelBytes > 1 && std::none_of(tables.begin() + 1, tables.end(), differs)) {
        std::uint64_t const whole = source.GetWidth() - source.GetWidth() % pixelBytes;
        FindEntry(instructionSet)(ConstPlane(source.GetData(), source.GetStride(), whole, source.GetHeight()),
                                  MutablePlane(target.GetData(), target.GetStride(), whole, target.GetHeight()),
                                  tables.first(1), 1);
        return;
    }
    FindEntry(instructionSet)(source, target, tables, pixelBytes);
}

void MapBytes(ConstPlane const& source, MutablePlane const& target, std::span<Table const> tables,
              unsigned int pixelBytes) {
    MapBytesWith(UsedTarget(), source, target, tables, pixelBytes);
}

} // namespace Velnor::Proc::Kernels
