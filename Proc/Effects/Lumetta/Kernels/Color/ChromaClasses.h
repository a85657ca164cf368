#pragma once

#include "Proc/Interfaces/Plane.h"

#include <cstdint>
#include <span>

namespace Velnor::Proc::Kernels {

/// Chroma of one class of pixels: sums while they are added up, then means. The sums are of 32 bits and wrap, in a
/// class of more than 16.8 million samples of 255.
struct ChromaSum {
    std::uint32_t blue = 0;
    std::uint32_t red = 0;
    std::uint32_t count = 0;

    ChromaSum& operator+=(ChromaSum const& part) {
        blue += part.blue;
        red += part.red;
        count += part.count;
        return *this;
    }
};

/// The planes of a picture's chroma, and of the class numbers of its pixels: that of a chroma sample (x, y) is the one
/// at (x << shiftX, y << shiftY). The class plane covers all of them.
struct ChromaClasses {
    ConstPlane classes;
    MutablePlane blue;
    MutablePlane red;
    unsigned int shiftX = 0;
    unsigned int shiftY = 0;
};

/// Adds every chroma sample to the sum of its class. Throws EffectException for a class that has no sum.
void AddChroma(ChromaClasses const& picture, std::span<ChromaSum> sums);

/// Divides the sums by their counts, truncating; a class without samples is left alone.
void DivideChroma(std::span<ChromaSum> sums);

/// Writes to every chroma sample the low bytes of the entry of its class, which AddChroma has found to exist.
void WriteChroma(ChromaClasses const& picture, std::span<ChromaSum const> means);

} // namespace Velnor::Proc::Kernels
