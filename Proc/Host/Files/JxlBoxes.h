#pragma once

#include "Proc/Host/Files/MetadataBlocks.h"

namespace Velnor::Proc::Files {

/// Takes EXIF and XMP out of the boxes of a JPEG XL file (ISO/IEC 18181-2), plain or packed by Brotli. A file that is a
/// bare codestream has none. Returns what is wrong with them, as part of a sentence; empty for nothing.
std::string ReadJxlBoxes(int descriptor, MetadataBlocks& blocks);

} // namespace Velnor::Proc::Files
