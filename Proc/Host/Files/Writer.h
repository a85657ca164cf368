#pragma once

#include "Proc/Host/Files/FilesModule.h"

#include <filesystem>

namespace Velnor::Proc::Files {

/// WritePicture, by libvips. JPEG keeps half the chroma resolution below quality 95, as cameras do; WebP and PNG and
/// TIFF keep all of what they can.
void WriteVipsPicture(std::filesystem::path const& path, FileKind kind, IDataVideo const& picture,
                      PictureMetadata const* metadata, WriteOptions const& options);

} // namespace Velnor::Proc::Files
