#pragma once

#include "Proc/Host/Files/MetadataBlocks.h"

#include <cstddef>
#include <span>
#include <string>

namespace Velnor::Proc::Files {

/// What the metadata library (Exiv2) does, over bytes. All throw std::exception for what the library cannot follow.

/// Takes EXIF and IPTC out of a TIFF file, where they stand among the tags of the picture. Large files count by the
/// few pages that are looked at.
void ReadTiffTags(std::span<unsigned char const> file, MetadataBlocks& blocks);

/// A TIFF file with EXIF added, one without image resources, of which the library reads past the end. The bytes that
/// are given may change. Maker notes that the library knows are written anew, with the places in them renewed; others
/// keep their bytes, and are lost to those that count places from the file's begin.
std::string AddTiffTags(std::span<unsigned char> file, std::string const& exif);

/// An XMP packet, or an empty one, with the fields of IPTC data that it does not have yet. `isComplete` tells whether
/// XMP knows every one of them.
std::string AddIptcToXmp(std::string const& packet, std::string const& iptc, bool& isComplete);

/// An XMP packet, or an empty one, with a title unless it has one.
std::string AddTitleToXmp(std::string const& packet, std::string const& title);

/// An XMP packet without the properties that tell a place on the globe.
std::string DropGpsFromXmp(std::string const& packet);

/// An XMP packet without thumbnails and whole pictures: what cameras keep of the picture as it was taken.
std::string DropPicturesFromXmp(std::string const& packet);

} // namespace Velnor::Proc::Files
