#pragma once

#include <string>
#include <string_view>

namespace Velnor::Proc::Files {

/// EXIF without the directory of the thumbnail (IFD1): the first directory ends the list. What it pointed to goes when
/// the block is written anew from its tags. A block that cannot be followed stays as it is.
/// Format: TIFF 6.0, section 2, after an optional "Exif\0\0".
std::string CleanExif(std::string const& block);

/// An XMP packet for an upright copy that shows other pixels: without the thumbnails, with the orientation, where it is
/// given, as 1. A packet that cannot be followed stays as it is.
std::string CleanXmp(std::string const& packet);

/// What comes before the image resources in the APP13 segment of a JPEG file.
inline constexpr std::string_view RESOURCES_HEAD("Photoshop 3.0\0", 14);

/// IPTC data as an image resource (1028).
std::string WrapIptc(std::string const& iptc);

/// A block of image resources without the thumbnail resources (1033 and 1036).
/// What follows a damaged resource, stays as it is.
/// Format: Adobe Photoshop file formats, "Image Resource Blocks".
std::string CleanPhotoshopResources(std::string const& block);

} // namespace Velnor::Proc::Files
