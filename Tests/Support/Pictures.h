#pragma once

#include "Proc/Host/Context.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <vector>

namespace Velnor::Proc::Testing {

/// Pictures between whose rows nobody writes unnoticed.
inline MemoryLimits GuardedPictures() {
    MemoryLimits limits;
    limits.onOverrun = [](std::string const& what) { ADD_FAILURE() << what; };
    return limits;
}

inline ContextHandle CreateContext() { return MakeShared<Context>(GuardedPictures()); }

/// A picture whose samples (not the bytes between rows) are a fixed, patternless function of plane, row and column.
inline VideoHandle MakeNoise(IEffectContext& context, PixFmt format, std::uint32_t width, std::uint32_t height,
                             std::uint32_t seed = 1) {
    VideoHandle const picture = context.CreateImage(format, FrameFormat::Square(width, height));
    std::uint32_t state = seed * 2654435761U + 1;
    for (unsigned char plane = 0; plane < GetPlanesCount(*picture); ++plane) {
        MutablePlane const samples = picture->GetMutablePlane(plane);
        for (std::uint64_t y = 0; y < samples.GetHeight(); ++y)
            for (std::uint64_t x = 0; x < samples.GetWidth(); ++x) {
                state = state * 1664525U + 1013904223U;
                samples.GetRow(y)[x] = static_cast<unsigned char>(state >> 24);
            }
    }
    return picture;
}

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

/// All samples of all planes, row by row, without what lies between rows.
inline std::vector<unsigned char> Samples(IDataVideo const& picture) {
    std::vector<unsigned char> bytes;
    for (unsigned char plane = 0; plane < GetPlanesCount(picture); ++plane) {
        ConstPlane const samples = picture.GetPlane(plane);
        for (std::uint64_t y = 0; y < samples.GetHeight(); ++y)
            bytes.insert(bytes.end(), samples.GetRow(y), samples.GetRow(y) + samples.GetWidth());
    }
    return bytes;
}

} // namespace Velnor::Proc::Testing
