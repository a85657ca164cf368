#pragma once

#include "Core/Export.h"

#include <array>
#include <cstddef>

namespace Velnor::Proc::Kernels {

/// Which bytes of a pixel are blended: byte k where mask[k] is 255; it stays as it is where mask[k] is 0.
struct BlendShape {
    unsigned int pixelBytes = 1; ///< 1 to 4.
    std::array<unsigned char, 4> mask{255, 255, 255, 255};
};

/// first[k] = (a second[k] + (255 - a) first[k] + 127) / 255, exactly, for the blended bytes k of every pixel, `a`
/// being the pixel's alpha. The rows may have any alignment and share no byte.
VELNOR_API void BlendPixels(unsigned char* first, unsigned char const* second, unsigned char const* alpha,
                            std::size_t pixels, BlendShape const& shape);

/// alpha[x] = (alpha[x] constant + 127) / 255.
VELNOR_API void MultiplyAlpha(unsigned char* alpha, std::size_t pixels, unsigned char constant);

} // namespace Velnor::Proc::Kernels
