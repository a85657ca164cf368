#pragma once

#include "Core/PixFmt.h"

#include <vector>

namespace Velnor::Proc::Kernels {

/// The packed formats of 8-bit red, green and blue in the first three bytes of a pixel, by code: those that the effects
/// on tables compute in.
inline std::vector<PixFmt> const& PackedRgbFormats() {
    static std::vector<PixFmt> const formats{PixFmt::RGB24, PixFmt::BGR24, PixFmt::RGBA,
                                             PixFmt::BGRA,  PixFmt::RGBX,  PixFmt::BGRX};
    return formats;
}

/// What a pass over such pixels needs to know of the format.
struct PackedRgb {
    unsigned int pixelBytes;
    bool isBlueFirst;

    explicit PackedRgb(PixFmt format)
        : pixelBytes(PixFmtDescription::Find(format)->planes[0].bytes),
          isBlueFirst(PixFmtDescription::Find(format)->components[2].offset == 0) {}
};

} // namespace Velnor::Proc::Kernels
