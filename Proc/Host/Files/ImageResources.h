#pragma once

#include <string>
#include <vector>

namespace Velnor::Proc::Files {

/// One of a block of image resources. Format: Adobe Photoshop file formats, "Image Resource Blocks".
struct ImageResource {
    unsigned identifier;
    std::string whole; ///< With signature, identifier, name and size.
    std::string data;
};

inline constexpr unsigned IPTC_RESOURCE = 1028;

/// What stands before a damaged resource.
std::vector<ImageResource> ParseImageResources(std::string const& block);

/// Whether no resource reaches over the block's end.
bool AreImageResourcesWhole(std::string const& block);

/// IPTC data as an image resource.
std::string WrapIptc(std::string const& iptc);

/// The IPTC data among image resources; empty where there is none.
std::string FindIptc(std::string const& block);

/// The block without IPTC data.
std::string DropIptc(std::string const& block);

/// The block without the thumbnails (1033 and 1036), and without what describes the samples of the file that it was
/// read from: its resolution (1005), the sum of its IPTC data (1061) and its EXIF (1058 and 1059) and XMP (1060), which
/// a file holds by themselves.
std::string CleanImageResources(std::string const& block);

} // namespace Velnor::Proc::Files
