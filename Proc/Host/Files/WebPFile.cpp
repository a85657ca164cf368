#include "Proc/Host/Files/WebPFile.h"

#include <webp/mux.h>

#include <array>
#include <memory>
#include <utility>

namespace Velnor::Proc::Files {
namespace {

WebPData AsData(std::string_view bytes) { return {reinterpret_cast<std::uint8_t const*>(bytes.data()), bytes.size()}; }

} // namespace

std::optional<std::string> AddWebPChunks(std::string_view encoded, MetadataBlocks const& metadata) {
    constexpr int KEEP = 0; // The chunks' bytes are not copied.
    WebPData const file = AsData(encoded);
    std::unique_ptr<WebPMux, decltype(&WebPMuxDelete)> const mux(WebPMuxCreate(&file, KEEP), &WebPMuxDelete);
    if (mux == nullptr) return {};
    for (auto const& [name, block] : {std::pair<char const*, std::string const&>{"ICCP", metadata.profile},
                                      {"EXIF", metadata.exif},
                                      {"XMP ", metadata.xmp}}) {
        WebPData const data = AsData(block);
        (void)WebPMuxDeleteChunk(mux.get(), name); // The encoder makes EXIF up, of a resolution that nobody gave.
        if (!block.empty() && WebPMuxSetChunk(mux.get(), name, &data, KEEP) != WEBP_MUX_OK) return {};
    }
    WebPData assembled{};
    if (WebPMuxAssemble(mux.get(), &assembled) != WEBP_MUX_OK) return {};
    std::unique_ptr<WebPData, decltype(&WebPDataClear)> const owner(&assembled, &WebPDataClear);
    return std::string(reinterpret_cast<char const*>(assembled.bytes), assembled.size);
}

WebPChunks ReadWebPChunks(FileBytes const& file) {
    constexpr std::uint64_t HEAD = 8; // A name and a length, of a chunk and of the whole file.
    constexpr std::uint64_t FIRST = 12;
    constexpr bool LITTLE_ENDIAN_NUMBERS = true;
    struct Kind {
        char const* name;
        std::string WebPChunks::*block;
        unsigned promise; ///< In the flags of the extended header.
    };
    constexpr std::array<Kind, 3> KINDS{
        {{"ICCP", &WebPChunks::profile, 0x20}, {"EXIF", &WebPChunks::exif, 8}, {"XMP ", &WebPChunks::xmp, 4}}};
    auto const getLength = [&](std::uint64_t at) { return ToNumber(file.Read(at + 4, 4), LITTLE_ENDIAN_NUMBERS); };
    WebPChunks found;
    std::uint64_t const end = HEAD + getLength(0);
    unsigned promised = 0;
    std::uint64_t next = 0;
    for (std::uint64_t at = FIRST; at + HEAD <= end; at = next) {
        std::string const name = file.Read(at, 4);
        std::uint64_t const length = getLength(at);
        next = at + HEAD + length + length % 2;
        if (at + HEAD + length > end || !file.Holds(at + HEAD, length)) {
            bool const isPixels = name.starts_with("VP8") || name == "ALPH" || name == "ANMF"; // The decoder's matter.
            if (!isPixels)
                found.damage = name.empty() ? "it ends before its last chunk" : "its chunk " + name + " is cut short";
            break;
        }
        if (name == "VP8X" && length > 0) promised = static_cast<unsigned char>(file.Read(at + HEAD, 1)[0]);
        for (Kind const& kind : KINDS)
            if (name == kind.name) found.*kind.block = file.Read(at + HEAD, length);
    }
    for (Kind const& kind : KINDS)
        if ((promised & kind.promise) != 0 && (found.*kind.block).empty() && found.damage.empty())
            found.damage = "its chunk " + std::string(kind.name) + " is missing";
    return found;
}

} // namespace Velnor::Proc::Files
