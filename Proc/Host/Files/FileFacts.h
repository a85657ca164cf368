#pragma once

#include "Proc/Host/Files/Loaders.h"

#include <cstdint>
#include <string>

namespace Velnor::Proc::Files {

/// What a file tells about itself that the file library does not tell before it decodes, or does not check.
struct FileFacts {
    std::uint64_t fileBytes = 0;
    unsigned pixelBits = 0;          ///< Of a pixel as the file stores it, unpacked; 0 when it is not known.
    std::uint64_t rowsAtOnce = 1;    ///< Rows that the decoder holds at a time.
    std::uint64_t metadataBytes = 0; ///< Of what is packed beside the pixels; counted to a little over the limit.
    std::string damage;              ///< What is wrong beside the pixels, as part of a sentence; empty for nothing.

    /// Packed metadata that is worth carrying takes less. The decoder unpacks it all before the first pixel.
    static constexpr std::uint64_t MAX_METADATA_BYTES = 8 << 20;
};

/// Looks through the file without decoding pixels. Kinds other than PNG and TIFF give no more than the size. What is
/// no such file at all is left for the decoder to refuse.
///
/// PNG (ISO/IEC 15948): chunks beside the pixels are whole and have the right checksum, packed ones unpack.
/// TIFF 6.0 and BigTIFF: values of the first directory and of its EXIF and GPS directories lie within the file.
FileFacts ReadFileFacts(int descriptor, ReadKind kind);

} // namespace Velnor::Proc::Files
