#pragma once

#include "Proc/Host/MemoryPool.h"
#include "Proc/Interfaces/IEffectContext.h"

#include <memory>

namespace Velnor::Proc {

/// The host's pictures: their memory comes from one pool, which lives as long as any of them.
class VELNOR_API Context : public IEffectContext {
public:
    explicit Context(MemoryLimits const& limits = MemoryLimits());

    using IEffectContext::CreateImage;

    std::uint64_t GetMemoryUsed() const override { return pool->GetUsed(); }
    std::uint64_t GetMemoryPooled() const override { return pool->GetPooled(); }
    void ReleaseMemory() override { pool->Release(); }
    void WrapImage(VideoHandle* result, PixFmt format, FrameFormat const& frame, std::vector<ConstPlane> const& planes,
                   intrusive_ptr<IRefCountable const> const& owner) override;
    void CreateImage(VideoHandle* result, PixFmt format, FrameFormat const& frame) override;

private:
    std::shared_ptr<MemoryPool> pool;
};

} // namespace Velnor::Proc
