#pragma once

#include "Proc/Host/Files/Metadata.h"
#include "Proc/Host/OutputFile.h"
#include "Proc/Interfaces/IData.h"

namespace Velnor::Proc::Files {

/// Writes a PAL8 picture as a PNG file with the same palette, exactly, at 1, 2, 4 or 8 bits a pixel, whatever its
/// highest index needs. The file library can only make a palette of its own by quantising, but rows of palette indexes
/// are packed just as grey ones are (PNG, second edition, 7.2): so it writes the indexes as a grey picture, which then
/// becomes one with a palette by its header. False when the library fails.
bool WritePalettePng(OutputFile& file, IDataVideo const& picture, VipsMetadata const* metadata);

} // namespace Velnor::Proc::Files
