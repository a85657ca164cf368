#pragma once

#include "Proc/Host/PictureFile.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace Velnor::Proc::Files {

/// Whether a file with these first bytes is a Windows bitmap.
bool IsBmp(std::string_view head);

/// ReadPicture of a Windows bitmap of which all bytes are given, by ImageMagick: RGB24, or RGBA where it has alpha.
/// Such files carry no metadata.
LoadedPicture ReadBmpPicture(std::filesystem::path const& path, std::string const& content, IEffectContext& context,
                             ReadOptions const& options);

/// The decoder. It is in the module of ImageMagick, which takes 30 ms to load. Throws EffectException with the
/// library's complaint.
using BmpDecoderFunction = void (*)(std::string const& content, FrameFormat const& frame, bool acceptDamaged,
                                    IEffectContext& context, VideoHandle& picture);
inline constexpr char const* BMP_DECODER_ENTRY = "DecodeVelnorBmp";
inline constexpr char const* BMP_DECODER_FILE = "libVelnorMagick.so";

} // namespace Velnor::Proc::Files
