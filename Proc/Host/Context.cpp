#include "Proc/Host/Context.h"

#include "Proc/Host/Image.h"

namespace Velnor::Proc {

Context::Context(MemoryLimits const& limits) : pool(MemoryPool::Create(limits)) {}

void Context::WrapImage(VideoHandle* result, PixFmt format, FrameFormat const& frame,
                        std::vector<ConstPlane> const& planes, intrusive_ptr<IRefCountable const> const& owner) {
    *result = Image::Wrap(pool, format, frame, planes, owner);
}

void Context::CreateImage(VideoHandle* result, PixFmt format, FrameFormat const& frame) {
    *result = Image::Create(pool, format, frame);
}

} // namespace Velnor::Proc
