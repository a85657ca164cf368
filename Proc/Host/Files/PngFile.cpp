#include "Proc/Host/Files/PngFile.h"

#include "Proc/Host/Files/VipsSupport.h"
#include "Proc/Host/PictureFile.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <exception>
#include <limits>
#include <string>
#include <vector>

namespace Velnor::Proc::Files {
namespace {

constexpr std::size_t ENTRY_BYTES = 4;
constexpr unsigned char OPAQUE = std::numeric_limits<unsigned char>::max();

unsigned char FindHighestIndex(ConstPlane const& indexes) {
    unsigned char highest = 0;
    for (std::uint64_t y = 0; y < indexes.GetHeight(); ++y) {
        unsigned char const* const row = indexes.GetRow(y);
        highest = std::max(highest, *std::max_element(row, row + indexes.GetWidth()));
    }
    return highest;
}

int GetBitDepth(unsigned char highest) {
    if (highest < 2) return 1;
    if (highest < 4) return 2;
    return highest < 16 ? 4 : 8;
}

struct Layout {
    int bitDepth = 8;
    int colorType = PNG_COLOR_TYPE_RGB;
    std::vector<png_color> palette;
    std::vector<png_byte> opacities; ///< Empty when all are opaque.
};

Layout DescribePalette(IDataVideo const& picture) {
    unsigned char const highest = FindHighestIndex(picture.GetPlane(0));
    Layout layout{GetBitDepth(highest), PNG_COLOR_TYPE_PALETTE, {}, {}};
    unsigned char const* entry = picture.GetPlane(1).GetRow(0);
    for (int i = 0; i <= highest; ++i, entry += ENTRY_BYTES) {
        layout.palette.push_back({entry[0], entry[1], entry[2]});
        layout.opacities.push_back(entry[3]);
    }
    if (std::ranges::count(layout.opacities, OPAQUE) == std::ssize(layout.opacities)) layout.opacities.clear();
    return layout;
}

Layout Describe(IDataVideo const& picture) {
    switch (picture.GetPixFmt()) {
    case PixFmt::GRAY8:
        return {8, PNG_COLOR_TYPE_GRAY, {}, {}};
    case PixFmt::YA8:
        return {8, PNG_COLOR_TYPE_GRAY_ALPHA, {}, {}};
    case PixFmt::RGBA:
        return {8, PNG_COLOR_TYPE_RGB_ALPHA, {}, {}};
    case PixFmt::PAL8:
        return DescribePalette(picture);
    default:
        return {8, PNG_COLOR_TYPE_RGB, {}, {}};
    }
}

/// What goes into a file, in forms that outlive the library's jumps.
struct Content {
    OutputFile& file;
    IDataVideo const& picture;
    MetadataBlocks const& metadata;
    int compression;
    Layout layout;
    std::vector<png_text> texts;
    std::exception_ptr failure; ///< Of the file: exceptions cannot pass through the library.
    std::string complaint;      ///< Of the library.
    bool isProfileKept = true;
};

void AddText(Content& content, std::string const& key, std::string const& text, int compression) {
    png_text entry{};
    entry.compression = compression;
    entry.key = const_cast<char*>(key.c_str());
    entry.text = const_cast<char*>(text.c_str());
    bool const isInternational = compression == PNG_ITXT_COMPRESSION_NONE;
    (isInternational ? entry.itxt_length : entry.text_length) = text.size();
    content.texts.push_back(entry);
}

void WriteBytes(png_structp png, png_bytep data, std::size_t bytes) {
    auto* const content = static_cast<Content*>(png_get_io_ptr(png));
    try {
        content->file.Write(data, bytes);
        return;
    } catch (...) {
        content->failure = std::current_exception();
    }
    png_error(png, "the file cannot be written");
}

[[noreturn]] void Complain(png_structp png, char const* message) {
    auto* const content = static_cast<Content*>(png_get_error_ptr(png));
    if (content->complaint.empty()) content->complaint = message;
    png_longjmp(png, 1);
}

void SetMetadata(png_structp png, png_infop info, Content& content) {
    constexpr double MM_PER_METRE = 1000;
    MetadataBlocks const& metadata = content.metadata;
    auto const bytesOf = [](std::string const& block) { return reinterpret_cast<png_const_bytep>(block.data()); };
    auto const sizeOf = [](std::string const& block) { return static_cast<png_uint_32>(block.size()); };
    // A profile that the library finds fault with is left out with a warning.
    if (!metadata.profile.empty()) {
        png_set_iCCP(png, info, "icc", PNG_COMPRESSION_TYPE_BASE, bytesOf(metadata.profile), sizeOf(metadata.profile));
        content.isProfileKept = png_get_valid(png, info, PNG_INFO_iCCP) != 0;
    }
    if (!metadata.exif.empty())
        png_set_eXIf_1(png, info, sizeOf(metadata.exif), const_cast<png_bytep>(bytesOf(metadata.exif)));
    if (metadata.xResolution > 0)
        png_set_pHYs(png, info, static_cast<png_uint_32>(std::lround(metadata.xResolution * MM_PER_METRE)),
                     static_cast<png_uint_32>(std::lround(metadata.yResolution * MM_PER_METRE)), PNG_RESOLUTION_METER);
    if (!content.texts.empty()) png_set_text(png, info, content.texts.data(), static_cast<int>(content.texts.size()));
}

/// All that can jump out: nothing here has a destructor.
bool Write(png_structp png, png_infop info, Content& content) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    Layout const& layout = content.layout;
    FrameFormat const& frame = content.picture.GetFrameFormat();
    png_set_write_fn(png, &content, WriteBytes, nullptr);
    png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_option(png, PNG_SKIP_sRGB_CHECK_PROFILE, PNG_OPTION_ON);
    png_set_benign_errors(png, 1);
    png_set_compression_level(png, content.compression);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
    png_set_IHDR(png, info, frame.width, frame.height, layout.bitDepth, layout.colorType, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
    if (!layout.palette.empty())
        png_set_PLTE(png, info, layout.palette.data(), static_cast<int>(layout.palette.size()));
    if (!layout.opacities.empty())
        png_set_tRNS(png, info, layout.opacities.data(), static_cast<int>(layout.opacities.size()), nullptr);
    SetMetadata(png, info, content);
    png_write_info(png, info);
    png_set_packing(png);
    for (std::uint64_t y = 0; y < frame.height; ++y) png_write_row(png, content.picture.GetPlane(0).GetRow(y));
    png_write_end(png, nullptr);
    return true;
}

constexpr std::string_view RAW_PROFILE = "Raw profile type ";

} // namespace

bool WritePng(OutputFile& file, IDataVideo const& picture, MetadataBlocks const& metadata, int compression) {
    Content content{file, picture, metadata, compression, Describe(picture), {}, {}, {}, true};
    std::string const resourcesKey = std::string(RAW_PROFILE) + "iptc";
    std::string const xmpKey = "XML:com.adobe.xmp";
    std::string const resources = WrapRawProfile("iptc", metadata.resources);
    if (!metadata.resources.empty()) AddText(content, resourcesKey, resources, PNG_TEXT_COMPRESSION_zTXt);
    if (!metadata.xmp.empty()) AddText(content, xmpKey, metadata.xmp, PNG_ITXT_COMPRESSION_NONE);
    for (auto const& [key, text] : metadata.texts) AddText(content, key, text, PNG_ITXT_COMPRESSION_NONE);

    png_structp png =
        png_create_write_struct(PNG_LIBPNG_VER_STRING, &content, Complain, [](png_structp, char const*) {});
    png_infop info = png == nullptr ? nullptr : png_create_info_struct(png);
    bool const done = info != nullptr && Write(png, info, content);
    png_destroy_write_struct(&png, &info);
    if (content.failure) std::rethrow_exception(content.failure);
    if (!done) VELNOR_THROW(FileOutputException, "A PNG file cannot be made: " + content.complaint + ".");
    return content.isProfileKept;
}

std::string WrapRawProfile(std::string const& name, std::string const& block) {
    constexpr std::size_t BYTES_IN_LINE = 36;
    constexpr char const* DIGITS = "0123456789abcdef";
    std::string text = "\n" + name + "\n" + std::to_string(block.size());
    for (std::size_t i = 0; i < block.size(); ++i) {
        if (i % BYTES_IN_LINE == 0) text += '\n';
        auto const byte = static_cast<unsigned char>(block[i]);
        text += DIGITS[byte >> 4];
        text += DIGITS[byte & 15];
    }
    return text + "\n";
}

std::string UnwrapRawProfile(std::string const& text) {
    std::size_t const name = text.find_first_not_of(" \n");
    std::size_t const size = name == std::string::npos ? name : text.find_first_of("0123456789", text.find('\n', name));
    std::size_t const digits = size == std::string::npos ? size : text.find('\n', size);
    if (digits == std::string::npos) return {};
    std::string hex;
    std::copy_if(text.begin() + static_cast<std::ptrdiff_t>(digits), text.end(), std::back_inserter(hex),
                 [](unsigned char c) { return std::isxdigit(c) != 0; });
    std::string block(hex.size() / 2, '\0');
    for (std::size_t i = 0; i < block.size(); ++i) {
        unsigned byte = 0;
        std::from_chars(hex.data() + 2 * i, hex.data() + 2 * i + 2, byte, 16);
        block[i] = static_cast<char>(byte);
    }
    return block;
}

} // namespace Velnor::Proc::Files
