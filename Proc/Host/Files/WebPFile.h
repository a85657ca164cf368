#pragma once

#include "Proc/Host/Files/MetadataBlocks.h"

#include <optional>
#include <string>
#include <string_view>

namespace Velnor::Proc::Files {

/// A WebP file with profile, EXIF and XMP in its chunks. Nothing when the file is none or memory runs out.
std::optional<std::string> AddWebPChunks(std::string_view encoded, MetadataBlocks const& metadata);

} // namespace Velnor::Proc::Files
