#include "Proc/Host/SampleStorage.h"

#include <utility>

namespace Velnor::Proc {
namespace {

constexpr std::uint64_t AlignUp(std::uint64_t bytes) {
    return (bytes + MemoryPool::ALIGNMENT - 1) / MemoryPool::ALIGNMENT * MemoryPool::ALIGNMENT;
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

std::uint64_t SampleStorage::GetBytes() const {
    if (owned) return memory.GetCapacity();
    std::uint64_t bytes = 0;
    for (ConstPlane const& plane : planes) bytes += plane.GetWidth() * plane.GetHeight();
    return bytes;
}

SamplesHandle AllocateSamples(MemoryPool& pool, std::vector<PlaneSize> const& sizes) {
    std::uint64_t bytes = 0;
    for (PlaneSize const& size : sizes) bytes += AlignUp(size.rowBytes) * size.rows;
    MemoryBlock block = pool.Allocate(bytes);
    PlaneArray planes;
    unsigned char const* at = block.GetData();
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        std::uint64_t const stride = AlignUp(sizes[i].rowBytes);
        planes[i] = {at, static_cast<std::int64_t>(stride), sizes[i].rowBytes, sizes[i].rows, sizes[i].sampleBytes};
        at += stride * sizes[i].rows;
    }
    return MakeShared<SampleStorage>(std::move(block), planes);
}

} // namespace Velnor::Proc
