#pragma once

#include "Proc/Host/Files/VipsSupport.h"

#include <cstdint>
#include <functional>

namespace Velnor::Proc::Files {

/// What can be read of a damaged WebP file, of which the file library reads all or nothing: the rows before the damage,
/// black after them, and the metadata that is there. Null when there are none, and for animations.
/// @param check  is called with an image of the size before a pixel is decoded, and may throw
OwnedImage SalvageWebp(int descriptor, std::function<void(VipsImage*)> const& check);

struct Salvaged {
    OwnedImage image;
    bool isWhole = false; ///< The file is not damaged at all.
};

/// The same of an interlaced PNG file within the limits: of passes that are not there, the pixels of those before stand
/// in, as large as they must be. 8 bits a sample.
Salvaged SalvageInterlacedPng(int descriptor);

/// The same of a JPEG XL file within the limits: what its decoder makes of the bytes before the damage, black where
/// they tell nothing.
Salvaged SalvageJpegXl(int descriptor);

/// A PNM file with so many bytes more, for the file library, which refuses a shorter one.
Owned<VipsSource> FillUp(int descriptor, std::uint64_t missingBytes);

} // namespace Velnor::Proc::Files
