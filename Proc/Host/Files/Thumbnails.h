#pragma once

#include <string>

namespace Velnor::Proc::Files {

/// An XMP packet for an upright copy that shows other pixels: without the thumbnails, with the orientation, where it is
/// given, as 1. A packet that cannot be followed stays as it is.
std::string CleanXmp(std::string const& packet);

/// A block of image resources, as in the APP13 segment of a JPEG file, without the thumbnail resources (1033 and 1036).
/// A block of another kind, or what follows a damaged resource, stays as it is.
/// Format: Adobe Photoshop File Formats Specification, "Image Resource Blocks".
std::string CleanPhotoshopResources(std::string const& block);

} // namespace Velnor::Proc::Files
