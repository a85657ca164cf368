#include "Proc/Host/Files/Loaders.h"

#include <algorithm>
#include <array>
#include <string>

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

/// The loader from sources; null while the module that has it is not loaded.
VipsForeignLoadClass const* FindLoader(LoaderRecord const& record) {
    GType const type = g_type_from_name((std::string(record.loader) + "Source").c_str());
    return type == 0 ? nullptr : VIPS_FOREIGN_LOAD_CLASS(g_type_class_ref(type));
}

/// Each is asked by itself: among those that are closed there is one that looks for the end of the first line, however
/// far that is.
std::optional<FoundLoader> MatchLoader(VipsSource* source) {
    for (LoaderRecord const& record : LOADERS) {
        VipsForeignLoadClass const* const loader = FindLoader(record);
        bool const isIt = loader != nullptr && vips_source_rewind(source) == 0 && loader->is_a_source(source) != 0;
        if (isIt) return FoundLoader{record.kind, VIPS_OBJECT_CLASS(loader)->nickname};
    }
    vips_error_clear();
    return std::nullopt;
}

} // namespace

void CloseOtherLoaders() {
    vips_operation_block_set("VipsForeignLoad", TRUE);
    OpenReadLoaders();
}

void OpenReadLoaders() {
    for (LoaderRecord const& record : LOADERS) vips_operation_block_set(record.loader, FALSE);
}

std::optional<FoundLoader> FindLoaderOf(VipsSource* source) {
    std::optional<FoundLoader> const found = MatchLoader(source);
    if (found) return found;
    LoadRarerKinds();
    return MatchLoader(source);
}

std::string ListReadKinds() {
    std::string list;
    for (LoaderRecord const& record : LOADERS) list += (list.empty() ? "" : ", ") + std::string(record.name);
    return list + ", BMP and the raw files of cameras";
}

} // namespace Velnor::Proc::Files
