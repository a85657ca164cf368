#pragma once

#include "Proc/Host/PictureFile.h"

#include <filesystem>

namespace Velnor::Proc::Files {

/// ReadPicture, by libvips.
///
/// Damage includes what a decoder only warns of: a broken JPEG code, which turns the rest of the picture grey, is no
/// more than a warning to its decoder. Pixels go straight from the decoder's strips to the picture.
LoadedPicture ReadVipsPicture(std::filesystem::path const& path, IEffectContext& context, ReadOptions const& options);

} // namespace Velnor::Proc::Files
