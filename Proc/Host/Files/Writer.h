#pragma once

#include "Proc/Host/Files/FilesModule.h"

#include <filesystem>

namespace Velnor::Proc::Files {

/// WritePicture, by libvips, and by others where libvips would change the metadata: PNG by libpng, the rarer kinds by
/// the module of encoders.
std::vector<std::string> WriteVipsPicture(std::filesystem::path const& path, FileKind kind, IDataVideo const& picture,
                                          PictureMetadata const* metadata, WriteOptions const& options);

} // namespace Velnor::Proc::Files
