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

/// A picture of one plane with the same level in every component of a pixel, a function of its place.
template <class Level>
VideoHandle MakeGrey(IEffectContext& context, PixFmt format, int width, int height, Level const& level) {
    VideoHandle const picture = context.CreateImage(
        format, FrameFormat::Square(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)));
    MutablePlane const plane = picture->GetMutablePlane(0);
    int const bytes = static_cast<int>(plane.GetSampleBytes());
    for (int y = 0; y < height; ++y)
        for (int i = 0; i < static_cast<int>(plane.GetWidth()); ++i)
            plane.GetRow(static_cast<std::uint64_t>(y))[i] = static_cast<unsigned char>(level(i / bytes, y));
    return picture;
}

/// The first byte of a pixel.
inline int At(IDataVideo const& picture, int x, int y) {
    ConstPlane const plane = picture.GetPlane(0);
    return plane.GetRow(static_cast<std::uint64_t>(y))[static_cast<std::uint64_t>(x) * plane.GetSampleBytes()];
}

} // namespace Velnor::Proc::Testing
