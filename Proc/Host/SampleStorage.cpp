#include "Proc/Host/SampleStorage.h"

#include <string>
#include <utility>

namespace Velnor::Proc {
namespace {

constexpr std::uint64_t AlignUp(std::uint64_t bytes) {
    return (bytes + MemoryPool::ALIGNMENT - 1) / MemoryPool::ALIGNMENT * MemoryPool::ALIGNMENT;
}

constexpr std::uint64_t GUARD_BYTES = MemoryPool::ALIGNMENT;

unsigned char GuardByte(std::uint64_t at) { return static_cast<unsigned char>(0xa5 + 31 * at); }

/// Calls `visit` with the bytes before the first row and after each, their number, and where that is.
template <class Visit>
void VisitGuards(PlaneArray const& planes, Visit const& visit) {
    visit(planes[0].GetData() - GUARD_BYTES, GUARD_BYTES, [] { return std::string("before the first row"); });
    for (std::size_t i = 0; i < planes.size(); ++i)
        for (std::uint64_t y = 0; y < planes[i].GetHeight(); ++y)
            visit(planes[i].GetRow(y) + planes[i].GetWidth(),
                  static_cast<std::uint64_t>(planes[i].GetStride()) - planes[i].GetWidth(), [&] {
                      return "after row " + std::to_string(y) + " of plane " + std::to_string(i) + ", " +
                             std::to_string(planes[i].GetWidth()) + " bytes x " +
                             std::to_string(planes[i].GetHeight()) + " rows";
                  });
}

} // namespace

std::vector<PlaneSize> GetPlaneSizes(PixFmtDescription const& description, FrameFormat const& frame) {
    std::vector<PlaneSize> sizes(description.planesCount);
    for (unsigned char plane = 0; plane < description.planesCount; ++plane)
        sizes[plane] = {static_cast<std::uint64_t>(description.GetPlanWidthSize(static_cast<int>(frame.width), plane)),
                        static_cast<std::uint64_t>(description.GetPlanHeight(static_cast<int>(frame.height), plane)),
                        description.planes[plane].bytes};
    return sizes;
}

SampleStorage::SampleStorage(MemoryBlock block, PlaneArray const& samplePlanes)
    : memory(std::move(block)), planes(samplePlanes), owned(true) {}

SampleStorage::SampleStorage(PlaneArray const& samplePlanes, intrusive_ptr<IRefCountable const> samplesOwner)
    : owner(std::move(samplesOwner)), planes(samplePlanes), owned(false) {}

SampleStorage::~SampleStorage() {
    if (!owned || memory.GetPool() == nullptr) return;
    auto const onOverrun = memory.GetPool()->GetLimits().onOverrun;
    if (onOverrun == nullptr) return;
    bool isWhole = true;
    VisitGuards(planes, [&](unsigned char const* bytes, std::uint64_t count, auto const& describe) {
        for (std::uint64_t i = 0; i < count && isWhole; ++i)
            if (bytes[i] != GuardByte(i)) {
                isWhole = false;
                onOverrun("A picture was written to " + describe() + ".");
            }
    });
}

std::uint64_t SampleStorage::GetBytes() const {
    if (owned) return memory.GetCapacity();
    std::uint64_t bytes = 0;
    for (ConstPlane const& plane : planes) bytes += plane.GetWidth() * plane.GetHeight();
    return bytes;
}

SamplesHandle AllocateSamples(MemoryPool& pool, std::vector<PlaneSize> const& sizes) {
    bool const isGuarded = pool.GetLimits().onOverrun != nullptr;
    std::uint64_t const guard = isGuarded ? GUARD_BYTES : 0;
    std::uint64_t bytes = guard;
    for (PlaneSize const& size : sizes) bytes += (AlignUp(size.rowBytes) + guard) * size.rows;
    MemoryBlock block = pool.Allocate(bytes);
    PlaneArray planes;
    unsigned char const* at = block.GetData() + guard;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        std::uint64_t const stride = AlignUp(sizes[i].rowBytes) + guard;
        planes[i] = {at, static_cast<std::int64_t>(stride), sizes[i].rowBytes, sizes[i].rows, sizes[i].sampleBytes};
        at += stride * sizes[i].rows;
    }
    if (isGuarded)
        VisitGuards(planes, [](unsigned char const* from, std::uint64_t count, auto const&) {
            for (std::uint64_t i = 0; i < count; ++i) const_cast<unsigned char*>(from)[i] = GuardByte(i);
        });
    return MakeShared<SampleStorage>(std::move(block), planes);
}

} // namespace Velnor::Proc
