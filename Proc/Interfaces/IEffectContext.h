#pragma once

#include "Proc/Interfaces/IData.h"

#include <cstdint>
#include <vector>

namespace Velnor::Proc {

/// Where effects get pictures from. Thread-safe. The order of the virtual operations is binary contract.
class VELNOR_API IEffectContext : public IRefCountable {
public:
    ~IEffectContext() override = default;              // 1st
    virtual std::uint64_t GetMemoryUsed() const = 0;   // 2nd: bytes that pictures hold now
    virtual std::uint64_t GetMemoryPooled() const = 0; // 3rd: bytes kept for pictures to come
    virtual void ReleaseMemory() = 0;                  // 4th: gives the pooled bytes back to the system

    /// 5th. A picture on the caller's memory: no sample is copied until somebody writes. `owner` is kept as long as the
    /// samples are in use and may be null when the caller sees to that.
    virtual void WrapImage(VideoHandle* result, PixFmt format, FrameFormat const& frame,
                           std::vector<ConstPlane> const& planes, intrusive_ptr<IRefCountable const> const& owner) = 0;

    /// 6th. A new picture whose samples are unspecified. Throws ProcException for an unknown format or an empty frame,
    /// std::bad_alloc when there is no memory.
    virtual void CreateImage(VideoHandle* result, PixFmt format, FrameFormat const& frame) = 0;

    VideoHandle CreateImage(PixFmt format, FrameFormat const& frame) {
        VideoHandle result;
        CreateImage(&result, format, frame);
        return result;
    }
};

using ContextHandle = intrusive_ptr<IEffectContext>;

} // namespace Velnor::Proc
