#pragma once

#include "Proc/Host/Files/VipsSupport.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Velnor::Proc::Files {

/// The kinds of picture file that are read, the last two not by the file library.
enum class ReadKind : std::uint8_t { Jpeg, Png, Tiff, WebP, Gif, Pnm, Heif, Jxl, Bmp, Raw };

/// Closes every loader of the file library but those of the kinds that are read: what else it has takes text for
/// pictures, reads without end, or is not made for hostile files.
void CloseOtherLoaders();

/// Opens those of the kinds that are read, as far as the library has them by now. One that came later begins closed.
void OpenReadLoaders();

struct FoundLoader {
    ReadKind kind;
    char const* operation; ///< The library's operation that loads from a source.
};

/// What reads the file, by its first bytes. Loads what knows the rarer kinds when no other knows it.
std::optional<FoundLoader> FindLoaderOf(VipsSource* source);

/// "JPEG, PNG, TIFF...", all kinds.
std::string ListReadKinds();

} // namespace Velnor::Proc::Files
