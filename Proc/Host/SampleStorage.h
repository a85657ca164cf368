#pragma once

#include "Core/PixFmt.h"
#include "Core/RefCountable.h"
#include "Proc/Host/MemoryPool.h"
#include "Proc/Interfaces/FrameFormat.h"
#include "Proc/Interfaces/Plane.h"

#include <array>
#include <cstdint>
#include <vector>

namespace Velnor::Proc {

using PlaneArray = std::array<ConstPlane, 4>;

/// Size of one plane: bytes of a row, rows, bytes of one sample.
struct PlaneSize {
    std::uint64_t rowBytes = 0;
    std::uint64_t rows = 0;
    std::uint64_t sampleBytes = 1;
};

/// The sizes of all planes of a picture, the palette included.
std::vector<PlaneSize> GetPlaneSizes(PixFmtDescription const& description, FrameFormat const& frame);

/// The samples of one or more planes, which several pictures may share. Nobody writes to them unless alone.
class SampleStorage : public IRefCountable {
public:
    /// Own samples: `planes` lie in `block`.
    SampleStorage(MemoryBlock block, PlaneArray const& samplePlanes);
    /// The caller's samples, never written. `samplesOwner` may be null.
    SampleStorage(PlaneArray const& samplePlanes, intrusive_ptr<IRefCountable const> samplesOwner);

    ~SampleStorage() override; ///< Tells the pool's onOverrun of bytes between rows that were written to.

    PlaneArray const& GetPlanes() const { return planes; }
    std::uint64_t GetBytes() const;
    bool IsOwned() const { return owned; } ///< Else they are the caller's.

    /// Whether the one who asks, an owner, may write. The count is read with acquire order: an owner on another thread
    /// that has just left has finished reading.
    bool IsWritable() const { return owned && GetRefCount() == 1; }

private:
    MemoryBlock memory;
    intrusive_ptr<IRefCountable const> owner;
    PlaneArray planes;
    bool owned;
};

using SamplesHandle = intrusive_ptr<SampleStorage>;

/// Samples of 1 to 4 planes in one block, each row on a 64-byte boundary. Unspecified content. Throws std::bad_alloc.
/// Of a pool with onOverrun, at least 64 bytes stand before the first row and after each.
SamplesHandle AllocateSamples(MemoryPool& pool, std::vector<PlaneSize> const& sizes);

/// The right to write, which whoever calls has by owning the samples alone.
inline MutablePlane MakeMutable(ConstPlane const& plane) {
    return {const_cast<unsigned char*>(plane.GetData()), plane.GetStride(), plane.GetWidth(), plane.GetHeight(),
            plane.GetSampleBytes()};
}

} // namespace Velnor::Proc
