#pragma once

#include <string>
#include <vector>

namespace Velnor::Tool {

/// A picture of a gallery, or why there is none.
struct GalleryTile {
    std::string label;   ///< "strength=50", empty for the only one.
    std::string command; ///< That makes it.
    std::string jpeg;    ///< The file's bytes; empty where the effect failed.
    std::string error;
};

/// What stands together: the strengths of one effect, or a recipe.
struct GalleryEntry {
    std::string name;
    std::string summary;
    std::vector<GalleryTile> tiles;
};
struct GallerySection {
    std::string title;
    std::vector<GalleryEntry> entries;
};

/// One page that needs no other file, and no network: the pictures are in it. `original` is the photograph's JPEG.
std::string FormatGallery(std::string const& title, std::string const& original,
                          std::vector<GallerySection> const& sections);

} // namespace Velnor::Tool
