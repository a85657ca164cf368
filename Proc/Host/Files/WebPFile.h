#pragma once

#include "Proc/Host/Files/FileBytes.h"
#include "Proc/Host/Files/MetadataBlocks.h"

#include <optional>
#include <string>
#include <string_view>

namespace Velnor::Proc::Files {

/// A WebP file with profile, EXIF and XMP in its chunks. Nothing when the file is none or memory runs out.
std::optional<std::string> AddWebPChunks(std::string_view encoded, MetadataBlocks const& metadata);

/// Metadata as the chunks of a WebP file have it.
struct WebPChunks {
    std::string profile, exif, xmp;
    std::string damage; ///< What is wrong with the chunks, as part of a sentence; empty for nothing.
};
WebPChunks ReadWebPChunks(FileBytes const& file);

} // namespace Velnor::Proc::Files
