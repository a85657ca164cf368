#include "Proc/Host/Files/JxlBoxes.h"

#include "Proc/Host/Files/IsoBoxes.h"

#include <brotli/decode.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace Velnor::Proc::Files {
namespace {

constexpr std::string_view CODESTREAM_HEAD("\xff\x0a", 2);
constexpr std::size_t MAX_BLOCK = 64U << 20; // Longer ones are no metadata, or a bomb.

/// Empty for what is damaged or too long.
std::string Unpack(std::string const& packed) {
    std::unique_ptr<BrotliDecoderState, decltype(&BrotliDecoderDestroyInstance)> const state(
        BrotliDecoderCreateInstance(nullptr, nullptr, nullptr), &BrotliDecoderDestroyInstance);
    auto const* in = reinterpret_cast<std::uint8_t const*>(packed.data());
    std::size_t inBytes = packed.size();
    std::string unpacked;
    std::array<std::uint8_t, 65536> piece{};
    BrotliDecoderResult result = BROTLI_DECODER_RESULT_NEEDS_MORE_OUTPUT;
    while (result == BROTLI_DECODER_RESULT_NEEDS_MORE_OUTPUT && unpacked.size() < MAX_BLOCK) {
        std::uint8_t* out = piece.data();
        std::size_t outBytes = piece.size();
        result = BrotliDecoderDecompressStream(state.get(), &inBytes, &in, &outBytes, &out, nullptr);
        unpacked.append(piece.begin(), piece.end() - outBytes);
    }
    return result == BROTLI_DECODER_RESULT_SUCCESS ? unpacked : std::string();
}

/// Returns what is wrong with it.
std::string Take(std::string type, std::string content, MetadataBlocks& blocks) {
    constexpr std::size_t TYPE_BYTES = 4;
    constexpr std::size_t OFFSET_BYTES = 4;
    if (type == "brob" && content.size() > TYPE_BYTES) {
        type = content.substr(0, TYPE_BYTES);
        content = Unpack(content.substr(TYPE_BYTES));
        if (content.empty()) return "its box " + type + " cannot be unpacked";
    }
    if (type == "xml ") blocks.xmp = content;
    if (type != "Exif") return {};
    std::uint64_t const begin =
        OFFSET_BYTES + ToNumber(std::string_view(content).substr(0, std::min(OFFSET_BYTES, content.size())));
    if (begin > content.size()) return "its EXIF is cut short";
    blocks.exif = content.substr(begin);
    return {};
}

} // namespace

std::string ReadJxlBoxes(int descriptor, MetadataBlocks& blocks) {
    FileBytes const file(descriptor);
    std::string damage;
    if (file.Read(0, CODESTREAM_HEAD.size()) == CODESTREAM_HEAD) return damage;
    for (std::uint64_t at = 0; at < file.GetSize() && damage.empty();) {
        IsoBox const box = ReadIsoBox(file, at, file.GetSize());
        if (box.type.empty()) return DescribeBrokenBox(file, at);
        bool const isWanted = box.type == "Exif" || box.type == "xml " || box.type == "brob";
        if (isWanted && box.end - box.content <= MAX_BLOCK)
            damage = Take(box.type, file.Read(box.content, box.end - box.content), blocks);
        at = box.end;
    }
    return damage;
}

} // namespace Velnor::Proc::Files
