#pragma once

#include "Proc/Host/Context.h"
#include "Tools/check/Pictures.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>

namespace Velnor::Proc::Testing {

/// Pictures between whose rows nobody writes unnoticed.
inline MemoryLimits GuardedPictures() {
    MemoryLimits limits;
    limits.onOverrun = [](std::string const& what) { ADD_FAILURE() << what; };
    return limits;
}

inline ContextHandle CreateContext() { return MakeShared<Context>(GuardedPictures()); }

using Check::MakeNoise;
using Check::Samples;

/// A picture of one plane with every pixel's bytes as given.
inline VideoHandle MakeFlat(IEffectContext& context, PixFmt format, std::uint32_t width, std::uint32_t height,
                            std::initializer_list<int> pixel) {
    VideoHandle const picture = context.CreateImage(format, FrameFormat::Square(width, height));
    MutablePlane const samples = picture->GetMutablePlane(0);
    for (std::uint64_t y = 0; y < samples.GetHeight(); ++y)
        for (std::uint64_t x = 0; x < samples.GetWidth(); ++x)
            samples.GetRow(y)[x] = static_cast<unsigned char>(*(pixel.begin() + x % pixel.size()));
    return picture;
}

} // namespace Velnor::Proc::Testing
