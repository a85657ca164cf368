#pragma once

#include "Proc/Host/Files/MetadataBlocks.h"

#include <cstddef>

namespace Velnor::Proc::Files {

/// Most bytes that fit one EXIF segment of a JPEG file.
inline constexpr std::size_t MAX_JPEG_EXIF = 65535 - 2 - 6;

/// Takes the colour profile, XMP with its extended part, image resources, comments and the resolution of JFIF out of
/// the segments of a JPEG file before its samples. Returns what is wrong with them, as part of a sentence; empty for
/// nothing. A profile that is not whole is left.
std::string ReadJpegSegments(int descriptor, MetadataBlocks& blocks);

/// The colour profile of a JPEG file; empty when it has none or one that is not whole. The file library reads no more
/// than the first ten segments, and those before one that is missing.
std::string ReadJpegProfile(int descriptor);

/// All blocks as segments, JFIF with the resolution first, to stand after the start of image.
std::string MakeJpegSegments(MetadataBlocks const& blocks);

} // namespace Velnor::Proc::Files
