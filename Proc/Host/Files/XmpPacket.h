#pragma once

#include <cstdint>
#include <string>

namespace Velnor::Proc::Files {

/// An XMP packet for an upright picture of that size: without thumbnails and without the name of an extended part;
/// orientation 1 and the size in those of its properties that there are. A packet that cannot be followed stays as it
/// is.
std::string CleanXmp(std::string const& packet, std::uint32_t width, std::uint32_t height);

/// The same packet for a picture that has become sRGB: the properties that tell its colours say so, where there are
/// any.
std::string LabelXmpSrgb(std::string const& packet);

/// Whether the packet of a JPEG file names an extended part.
bool NamesExtendedXmp(std::string const& packet);

/// One packet of the main one of a JPEG file and its extended part. Either may be empty.
std::string JoinExtendedXmp(std::string const& packet, std::string const& extended);

/// The two parts of a packet that is too long for one segment of a JPEG file (XMP, storage in files).
struct ExtendedXmp {
    std::string packet; ///< Names the extended part.
    std::string extended;
    std::string identity; ///< Of the extended part: its MD5 sum, 32 digits.
};
ExtendedXmp SplitExtendedXmp(std::string const& packet);

} // namespace Velnor::Proc::Files
