#pragma once

#include "Proc/Host/Files/Loaders.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Velnor::Proc::Files {

/// What a file tells about itself that the file library does not tell before it decodes, or does not check.
struct FileFacts {
    std::uint64_t fileBytes = 0;
    unsigned pixelBits = 0;          ///< Of a pixel as the file stores it, unpacked; 0 when it is not known.
    std::uint64_t rowsAtOnce = 1;    ///< Rows that the decoder holds at a time.
    std::uint64_t metadataBytes = 0; ///< Of what is packed beside the pixels; counted to a little over the limit.
    bool hasUnreadTags = false;      ///< EXIF, IPTC or texts in a TIFF file of 64 bits, which are not read.
    std::optional<std::uint64_t> wholeRows; ///< Of a PNM file that is cut short.
    std::uint64_t missingBytes = 0;         ///< At the end of such a file, as far as the decoder wants them.
    std::string damage; ///< What is wrong beside the pixels, as part of a sentence; empty for nothing.

    /// Packed metadata that is worth carrying takes less. The decoder unpacks it all before the first pixel.
    static constexpr std::uint64_t MAX_METADATA_BYTES = 8 << 20;
};

/// Looks through the file without decoding pixels. Kinds other than these give no more than the size. What is no such
/// file at all is left for the decoder to refuse.
///
/// PNG (ISO/IEC 15948): chunks beside the pixels are whole and have the right checksum, packed ones unpack.
/// TIFF 6.0 and BigTIFF: values of the first directory and of its EXIF and GPS directories lie within the file, and so
/// do the directories of all pages.
/// WebP: chunks are whole, and those of metadata that the header promises are there.
/// PNM: as many samples as the header promises.
/// HEIF: boxes are whole, and all items lie within the file.
FileFacts ReadFileFacts(int descriptor, ReadKind kind);

/// What is wrong with the places in an EXIF block, as part of a sentence; empty for nothing. Maker notes and thumbnails
/// are not looked into.
std::string FindExifDamage(std::string_view block);

} // namespace Velnor::Proc::Files
