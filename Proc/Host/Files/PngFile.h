#pragma once

#include "Proc/Host/Files/MetadataBlocks.h"
#include "Proc/Host/OutputFile.h"
#include "Proc/Interfaces/IData.h"

namespace Velnor::Proc::Files {

/// Writes a picture in GRAY8, YA8, RGB24, RGBA or PAL8 as a PNG file, by libpng: palettes exactly, at 1, 2, 4 or 8 bits
/// a pixel, whatever the highest index needs. The compression is 0 to 9. Returns whether the colour profile was kept:
/// the library takes none that it finds fault with. Throws FileOutputException.
bool WritePng(OutputFile& file, IDataVideo const& picture, MetadataBlocks const& metadata, int compression);

/// Image resources as a text of a PNG file, in the wrapping that programs agreed on, and back. The title of the text is
/// "Raw profile type " and the name of the block.
std::string WrapRawProfile(std::string const& name, std::string const& block);
std::string UnwrapRawProfile(std::string const& text);

} // namespace Velnor::Proc::Files
