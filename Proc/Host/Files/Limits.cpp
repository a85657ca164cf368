#include "Proc/Host/Files/Limits.h"

#include "Proc/Host/Image.h"
#include "Proc/Host/MemoryRoom.h"

#include <algorithm>

namespace Velnor::Proc::Files {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t MEGA = 1'000'000;

/// Smaller pictures may be as flat as they like: unpacked they do no harm.
constexpr std::uint64_t PIXELS_WORTH_A_LOOK = 64 * MEGA;

/// How many times its file the pixels of a photograph may take. Zeros take 1,000 times their file in deflate and
/// hundreds of thousands in some others, in JPEG files 85 (grey) to 190; photographs 5 to 50, scanned drawings 100.
double GetMaxExpansion(ReadKind kind) {
    switch (kind) {
    case ReadKind::Jpeg:
        return 80;
    case ReadKind::Pnm:
        return 16; // A bit takes a byte; text takes less.
    default:
        return 400;
    }
}

bool HasField(VipsImage* image, char const* name) { return vips_image_get_typeof(image, name) != 0; }

/// Bytes a pixel that the decoder itself holds of the whole picture. Measured, and rounded up.
std::uint64_t GetDecoderBytes(VipsImage* image, ReadKind kind) {
    auto const bands = static_cast<std::uint64_t>(vips_image_get_bands(image));
    switch (kind) {
    case ReadKind::Jpeg: // Progressive: 16-bit coefficients.
        return HasField(image, "jpeg-multiscan") ? 2 * bands : 0;
    case ReadKind::Png:
        return HasField(image, "interlaced") ? VIPS_IMAGE_SIZEOF_PEL(image) : 0;
    case ReadKind::WebP:
    case ReadKind::Gif:
        return 8;
    case ReadKind::Heif:
        return 10;
    case ReadKind::Jxl:
        return 16;
    default:
        return 0;
    }
}

std::uint64_t CountPixels(VipsImage* image) {
    return static_cast<std::uint64_t>(vips_image_get_width(image)) *
           static_cast<std::uint64_t>(vips_image_get_height(image));
}

std::uint64_t CountPixels(FrameFormat const& frame) { return std::uint64_t{frame.width} * frame.height; }

void RequireSize(fs::path const& path, FrameFormat const& frame, std::uint64_t maxPixels) {
    std::string const what = path.string() + " is too large: " + SizeText(frame);
    if (CountPixels(frame) > maxPixels)
        VELNOR_THROW(FilePixelsException, what + " are " + std::to_string(CountPixels(frame)) +
                                              " pixels, the limit is " + std::to_string(maxPixels) + ".");
    if (std::max(frame.width, frame.height) > LARGEST_PICTURE_SIDE)
        VELNOR_THROW(FileLimitException,
                     what + " pixels, a side has at most " + std::to_string(LARGEST_PICTURE_SIDE) + ".");
}

void RequireExpansion(fs::path const& path, FrameFormat const& frame, ReadKind kind, FileFacts const& facts,
                      double given) {
    std::uint64_t const pixels = CountPixels(frame);
    if (pixels < PIXELS_WORTH_A_LOOK) return;
    double const expansion = static_cast<double>(pixels) * static_cast<double>(facts.pixelBits) / 8 /
                             static_cast<double>(std::max<std::uint64_t>(1, facts.fileBytes));
    double const limit = given > 0 ? given : GetMaxExpansion(kind);
    if (expansion <= limit) return;
    VELNOR_THROW(FileExpansionException, path.string() + " is too large for its file: the pixels of " +
                                             SizeText(frame) + " take " +
                                             std::to_string(static_cast<std::uint64_t>(expansion)) + " times its " +
                                             std::to_string(facts.fileBytes) + " bytes, the limit is " +
                                             std::to_string(static_cast<std::uint64_t>(limit)) + " times.");
}

void RequireMemory(fs::path const& path, FrameFormat const& frame, std::uint64_t needed, std::uint64_t given) {
    std::uint64_t const limit = given > 0 ? given : GetMemorySize() / 2;
    if (needed <= limit) return;
    VELNOR_THROW(FileMemoryException, path.string() + " is too large: to read " + SizeText(frame) + " pixels takes " +
                                          std::to_string(needed / MEGA + 1) + " MB of memory, the limit is " +
                                          std::to_string(limit / MEGA) + " MB.");
}

} // namespace

std::uint64_t EstimateMemory(VipsImage* image, ReadKind kind, FileFacts const& facts) {
    constexpr int MOST_BANDS = 4;
    auto const height = static_cast<std::uint64_t>(vips_image_get_height(image));
    auto const bands = static_cast<std::uint64_t>(std::min(MOST_BANDS, vips_image_get_bands(image)));
    std::uint64_t const row = static_cast<std::uint64_t>(vips_image_get_width(image)) * VIPS_IMAGE_SIZEOF_PEL(image);
    return CountPixels(image) * (bands + GetDecoderBytes(image, kind)) + row * std::min(height, facts.rowsAtOnce);
}

void RequireLittleMetadata(fs::path const& path, FileFacts const& facts) {
    if (facts.metadataBytes <= FileFacts::MAX_METADATA_BYTES) return;
    VELNOR_THROW(FileLimitException, path.string() + " is too large: its texts and its profile unpack to more than " +
                                         std::to_string(FileFacts::MAX_METADATA_BYTES >> 20) + " MB.");
}

void RequireLimits(fs::path const& path, FrameFormat const& frame, std::uint64_t memory, ReadKind kind,
                   FileFacts const& facts, ReadOptions const& options) {
    RequireSize(path, frame, options.maxPixels);
    RequireExpansion(path, frame, kind, facts, options.maxExpansion);
    RequireMemory(path, frame, memory, options.maxMemory);
}

void RequireLimits(fs::path const& path, VipsImage* image, ReadKind kind, FileFacts const& facts,
                   ReadOptions const& options) {
    FileFacts known = facts;
    if (known.pixelBits == 0) known.pixelBits = static_cast<unsigned>(8 * VIPS_IMAGE_SIZEOF_PEL(image));
    auto const frame = FrameFormat::Square(static_cast<std::uint32_t>(vips_image_get_width(image)),
                                           static_cast<std::uint32_t>(vips_image_get_height(image)));
    RequireLimits(path, frame, EstimateMemory(image, kind, facts), kind, known, options);
}

} // namespace Velnor::Proc::Files
