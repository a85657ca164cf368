#include "Proc/Host/Files/JxlBoxes.h"

#include <brotli/decode.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace Velnor::Proc::Files {
namespace {

constexpr std::string_view CODESTREAM_HEAD("\xff\x0a", 2);
constexpr std::size_t MAX_BLOCK = 64U << 20; // Longer ones are no metadata, or a bomb.

std::uint64_t GetBigEndian(std::string_view bytes) {
    std::uint64_t value = 0;
    for (char const c : bytes) value = value << 8 | static_cast<unsigned char>(c);
    return value;
}

std::string ReadAt(int descriptor, std::uint64_t at, std::size_t bytes) {
    std::string content(bytes, '\0');
    ssize_t const read = pread(descriptor, content.data(), bytes, static_cast<off_t>(at));
    content.resize(read > 0 ? static_cast<std::size_t>(read) : 0);
    return content;
}

/// Where a box's content is. Size 0 means to the end, 1 that a long size follows. No type: there is no box.
struct Box {
    std::string type;
    std::uint64_t content = 0;
    std::uint64_t end = 0;
};

Box MakeBox(std::string_view head, std::uint64_t at, std::uint64_t fileEnd) {
    if (head.size() < 8) return {};
    std::uint64_t size = GetBigEndian(head.substr(0, 4));
    bool const isLong = size == 1 && head.size() >= 16;
    if (isLong) size = GetBigEndian(head.substr(8, 8));
    std::uint64_t const headBytes = isLong ? 16 : 8;
    if (size == 0) size = fileEnd - at;
    if (size < headBytes || size > fileEnd - at) return {};
    return {std::string(head.substr(4, 4)), at + headBytes, at + size};
}

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

void Take(std::string type, std::string content, MetadataBlocks& blocks) {
    constexpr std::size_t TYPE_BYTES = 4;
    if (type == "brob" && content.size() > TYPE_BYTES) {
        type = content.substr(0, TYPE_BYTES);
        content = Unpack(content.substr(TYPE_BYTES));
    }
    if (type == "xml ") blocks.xmp = content;
    if (type != "Exif" || content.size() < 4) return;
    std::uint64_t const begin = 4 + GetBigEndian(std::string_view(content).substr(0, 4));
    if (begin < content.size()) blocks.exif = content.substr(begin);
}

} // namespace

void ReadJxlBoxes(int descriptor, MetadataBlocks& blocks) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) return;
    auto const fileEnd = static_cast<std::uint64_t>(status.st_size);
    if (ReadAt(descriptor, 0, CODESTREAM_HEAD.size()) == CODESTREAM_HEAD) return;
    for (std::uint64_t at = 0; at < fileEnd;) {
        Box const box = MakeBox(ReadAt(descriptor, at, 16), at, fileEnd);
        if (box.type.empty()) return;
        bool const isWanted = box.type == "Exif" || box.type == "xml " || box.type == "brob";
        if (isWanted && box.end - box.content <= MAX_BLOCK)
            Take(box.type, ReadAt(descriptor, box.content, box.end - box.content), blocks);
        at = box.end;
    }
}

} // namespace Velnor::Proc::Files
