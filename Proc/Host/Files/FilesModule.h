#pragma once

#include "Proc/Host/PictureFile.h"

#include <filesystem>

namespace Velnor::Proc::Files {

enum class FileKind : std::uint8_t { Jpeg, Png, Tiff, WebP, Avif, Heic, Jxl, Pnm };

/// What the module that knows picture files offers to the host.
struct FilesModule {
    LoadedPicture (*read)(std::filesystem::path const& path, IEffectContext& context, ReadOptions const& options);

    /// The picture is in a format that the kind takes, the options in their ranges.
    std::vector<std::string> (*write)(std::filesystem::path const& path, FileKind kind, IDataVideo const& picture,
                                      PictureMetadata const* metadata, WriteOptions const& options);

    Color (*toPhotosColor)(Color const& color, PictureMetadata const& metadata);
};

using FilesModuleFunction = FilesModule const* (*)();

/// Name of the module's entry, a FilesModuleFunction. It makes the file library ready and throws FileException when
/// that fails.
inline constexpr char const* FILES_MODULE_ENTRY = "GetVelnorFiles";
inline constexpr char const* FILES_MODULE_FILE = "libVelnorFiles.so";

} // namespace Velnor::Proc::Files
