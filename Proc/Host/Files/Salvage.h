#pragma once

#include "Proc/Host/Files/VipsSupport.h"

#include <functional>

namespace Velnor::Proc::Files {

/// What can be read of a damaged WebP file, of which the file library reads all or nothing: the rows before the damage,
/// black after them. Null when there are none, and for animations.
/// @param check  is called with an image of the size before a pixel is decoded, and may throw
OwnedImage SalvageWebp(int descriptor, std::function<void(VipsImage*)> const& check);

struct Salvaged {
    OwnedImage image;
    bool isWhole = false; ///< The file is not damaged at all.
};

/// The same of an interlaced PNG file within the limits: of passes that are not there, the pixels of those before stand
/// in, as large as they must be. 8 bits a sample.
Salvaged SalvageInterlacedPng(int descriptor);

} // namespace Velnor::Proc::Files
