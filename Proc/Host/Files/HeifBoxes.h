#pragma once

#include "Proc/Host/Files/FileBytes.h"

#include <string>

namespace Velnor::Proc::Files {

/// What is wrong with the boxes of a HEIF file (ISO/IEC 23008-12), as part of a sentence; empty for nothing. The
/// decoder reads what it needs for the pixels and leaves out metadata that is not all there.
std::string FindHeifDamage(FileBytes const& file);

} // namespace Velnor::Proc::Files
