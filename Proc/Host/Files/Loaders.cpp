#include "Proc/Host/Files/Loaders.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Velnor::Proc::Files {
namespace {

struct LoaderRecord {
    ReadKind kind;
    char const* loader; ///< The library's class, parent of those that read from files, memory and sources.
    char const* name;
};

constexpr std::array<LoaderRecord, 8> LOADERS{{{ReadKind::Jpeg, "VipsForeignLoadJpeg", "JPEG"},
                                               {ReadKind::Png, "VipsForeignLoadPng", "PNG"},
                                               {ReadKind::Tiff, "VipsForeignLoadTiff", "TIFF"},
                                               {ReadKind::WebP, "VipsForeignLoadWebp", "WebP"},
                                               {ReadKind::Gif, "VipsForeignLoadNsgif", "GIF"},
                                               {ReadKind::Pnm, "VipsForeignLoadPpm", "PNM"},
                                               {ReadKind::Heif, "VipsForeignLoadHeif", "HEIC, AVIF"},
                                               {ReadKind::Jxl, "VipsForeignLoadJxl", "JPEG XL"}}};

/// By the loader that is made for sources and knows these first bytes, even one that is closed.
std::optional<ReadKind> MatchLoader(VipsSource* source) {
    char const* const found = vips_foreign_find_load_source(source);
    vips_error_clear();
    auto const record = std::ranges::find_if(LOADERS, [found](LoaderRecord const& each) {
        return found != nullptr && std::string_view(found).starts_with(each.loader);
    });
    return record == LOADERS.end() ? std::nullopt : std::optional(record->kind);
}

} // namespace

void CloseOtherLoaders() {
    vips_operation_block_set("VipsForeignLoad", TRUE);
    for (LoaderRecord const& record : LOADERS) vips_operation_block_set(record.loader, FALSE);
}

std::optional<ReadKind> FindReadKind(VipsSource* source) {
    std::optional<ReadKind> const kind = MatchLoader(source);
    if (kind) return kind;
    LoadRarerKinds();
    return MatchLoader(source);
}

std::string ListReadKinds() {
    std::string list;
    for (LoaderRecord const& record : LOADERS) list += (list.empty() ? "" : ", ") + std::string(record.name);
    return list;
}

} // namespace Velnor::Proc::Files
