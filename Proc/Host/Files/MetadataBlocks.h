#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Velnor::Proc::Files {

/// Whether a text begins with the mark of UTF-16.
inline bool IsUtf16(std::string_view text) { return text.starts_with("\xff\xfe") || text.starts_with("\xfe\xff"); }

/// How a JPEG file was encoded.
struct JpegCoding {
    int quality;         ///< 1 to 100, of the encoder that most use, whose table comes nearest to the file's.
    bool isChromaHalved; ///< In both directions.
};

/// What a photograph carries beside its pixels, each kind as the bytes of its own standard; empty where there is none.
struct MetadataBlocks {
    std::string exif;                                       ///< A TIFF structure, which begins with "II" or "MM".
    std::string xmp;                                        ///< One packet; of a JPEG file with its extended part.
    std::string resources;                                  ///< Image resources of "8BIM", IPTC among them.
    std::string profile;                                    ///< ICC.
    std::vector<std::string> comments;                      ///< Of a JPEG file.
    std::vector<std::pair<std::string, std::string>> texts; ///< Of a PNG file: keyword and text, in UTF-8.
    double xResolution = 0;                                 ///< Pixels per millimetre, 0 where it is unknown.
    double yResolution = 0;
    std::optional<JpegCoding> coding; ///< Of a JPEG file.
};

} // namespace Velnor::Proc::Files
