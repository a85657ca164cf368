#pragma once

#include "Proc/Host/Files/MetadataBlocks.h"

#include <cstddef>

namespace Velnor::Proc::Files {

/// Most bytes that fit one EXIF segment of a JPEG file.
inline constexpr std::size_t MAX_JPEG_EXIF = 65535 - 2 - 6;

/// Takes XMP with its extended part, image resources, comments and the resolution of JFIF out of the segments of a JPEG
/// file before its samples. What cannot be followed is left.
void ReadJpegSegments(int descriptor, MetadataBlocks& blocks);

/// All blocks as segments, JFIF with the resolution first, to stand after the start of image.
std::string MakeJpegSegments(MetadataBlocks const& blocks);

} // namespace Velnor::Proc::Files
