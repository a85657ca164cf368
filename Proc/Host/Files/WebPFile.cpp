#include "Proc/Host/Files/WebPFile.h"

#include <webp/mux.h>

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
        if (!block.empty() && WebPMuxSetChunk(mux.get(), name, &data, KEEP) != WEBP_MUX_OK) return {};
    }
    WebPData assembled{};
    if (WebPMuxAssemble(mux.get(), &assembled) != WEBP_MUX_OK) return {};
    std::unique_ptr<WebPData, decltype(&WebPDataClear)> const owner(&assembled, &WebPDataClear);
    return std::string(reinterpret_cast<char const*>(assembled.bytes), assembled.size);
}

} // namespace Velnor::Proc::Files
