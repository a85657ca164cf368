#include "Proc/Host/Files/PaletteFile.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Velnor::Proc::Files {
namespace {

constexpr std::size_t ENTRY_BYTES = 4;

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

int CopyStrip(VipsRegion* region, void*, void* user, void*, gboolean*) {
    auto const* const indexes = static_cast<ConstPlane const*>(user);
    VipsRect const& area = region->valid;
    for (int y = area.top; y < area.top + area.height; ++y)
        std::memcpy(VIPS_REGION_ADDR(region, area.left, y), indexes->GetRow(static_cast<std::uint64_t>(y)) + area.left,
                    static_cast<std::size_t>(area.width));
    return 0;
}

/// A grey PNG file of the indexes, in memory; empty when the library fails. At fewer than 8 bits the library takes the
/// lower bits of each value.
std::string EncodeIndexes(ConstPlane const& indexes, int depth, VipsMetadata const* metadata) {
    OwnedImage const image(vips_image_new());
    vips_image_init_fields(image.get(), static_cast<int>(indexes.GetWidth()), static_cast<int>(indexes.GetHeight()), 1,
                           VIPS_FORMAT_UCHAR, VIPS_CODING_NONE, VIPS_INTERPRETATION_B_W, 1.0, 1.0);
    if (metadata != nullptr) metadata->Apply(image.get(), FileKind::Png);
    void* data = nullptr;
    std::size_t bytes = 0;
    if (vips_image_pipelinev(image.get(), VIPS_DEMAND_STYLE_THINSTRIP, nullptr) != 0 ||
        vips_image_generate(image.get(), nullptr, CopyStrip, nullptr, const_cast<ConstPlane*>(&indexes), nullptr) !=
            0 ||
        vips_pngsave_buffer(image.get(), &data, &bytes, "bitdepth", depth, nullptr) != 0)
        return {};
    std::unique_ptr<void, decltype(&g_free)> const owner(data, &g_free);
    return {static_cast<char const*>(data), bytes};
}

std::string BigEndian(std::uint32_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
    return bytes;
}

std::string MakeChunk(std::string const& type, std::string const& data) {
    std::string const body = type + data;
    uLong const check = crc32(0, reinterpret_cast<Bytef const*>(body.data()), static_cast<uInt>(body.size()));
    return BigEndian(static_cast<std::uint32_t>(data.size())) + body + BigEndian(static_cast<std::uint32_t>(check));
}

std::string MakePaletteChunks(ConstPlane const& palette, unsigned char highest) {
    std::string colors;
    std::string opacities;
    bool isOpaque = true;
    unsigned char const* entry = palette.GetRow(0);
    for (int i = 0; i <= highest; ++i, entry += ENTRY_BYTES) {
        colors.append(reinterpret_cast<char const*>(entry), 3);
        opacities += static_cast<char>(entry[3]);
        isOpaque = isOpaque && entry[3] == std::numeric_limits<unsigned char>::max();
    }
    return MakeChunk("PLTE", colors) + (isOpaque ? "" : MakeChunk("tRNS", opacities));
}

/// Empty without a profile. A grey picture could not carry the RGB profile that a palette needs.
std::string MakeProfileChunk(std::span<char const> profile) {
    if (profile.empty()) return {};
    auto const sourceBytes = static_cast<uLong>(profile.size());
    std::vector<Bytef> packed(compressBound(sourceBytes));
    auto packedBytes = static_cast<uLongf>(packed.size());
    if (compress(packed.data(), &packedBytes, reinterpret_cast<Bytef const*>(profile.data()), sourceBytes) != Z_OK)
        return {};
    using namespace std::string_literals;
    return MakeChunk("iCCP", "icc\0\0"s + std::string(packed.begin(), packed.begin() + static_cast<long>(packedBytes)));
}

} // namespace

bool WritePalettePng(OutputFile& file, IDataVideo const& picture, VipsMetadata const* metadata) {
    constexpr std::size_t HEADER_AT = 8;       // after the signature
    constexpr std::size_t HEADER_DATA_AT = 16; // after its length and type
    constexpr std::size_t HEADER_DATA_BYTES = 13;
    constexpr std::size_t HEADER_END = HEADER_DATA_AT + HEADER_DATA_BYTES + 4;
    constexpr std::size_t COLOR_TYPE = 9;
    constexpr char INDEXED = 3;
    ConstPlane const indexes = picture.GetPlane(0);
    unsigned char const highest = FindHighestIndex(indexes);
    std::string const grey = EncodeIndexes(indexes, GetBitDepth(highest), metadata);
    if (grey.size() < HEADER_END) return false;
    std::string header = grey.substr(HEADER_DATA_AT, HEADER_DATA_BYTES);
    header[COLOR_TYPE] = INDEXED;
    std::string const head = grey.substr(0, HEADER_AT) + MakeChunk("IHDR", header) +
                             (metadata == nullptr ? "" : MakeProfileChunk(metadata->GetRgbProfile())) +
                             MakePaletteChunks(picture.GetPlane(1), highest);
    file.Write(head.data(), head.size());
    file.Write(grey.data() + HEADER_END, grey.size() - HEADER_END);
    return true;
}

} // namespace Velnor::Proc::Files
