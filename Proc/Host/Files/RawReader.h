#pragma once

#include "Proc/Host/PictureFile.h"

#include <filesystem>

namespace Velnor::Proc::Files {

/// Whether the name is that of a camera's raw file. Many of these are TIFF files too, of a small preview.
bool IsRawName(std::filesystem::path const& path);

/// ReadPicture of a camera's raw file, by LibRaw: developed with the camera's white balance to sRGB, upright.
LoadedPicture ReadRawPicture(std::filesystem::path const& path, IEffectContext& context, ReadOptions const& options);

} // namespace Velnor::Proc::Files
