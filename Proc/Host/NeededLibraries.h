#pragma once

#include "Core/Export.h"

#include <filesystem>
#include <string>
#include <vector>

namespace Velnor::Proc {

/// The libraries that a shared library asks the system's loader for, by their names (SONAME), in its order: the entries
/// DT_NEEDED of its dynamic section. They are read from the file (System V ABI, "Object Files" and "Dynamic Linking"),
/// and no code of the library is run. Throws ProcException, whose text says what is wrong without naming the file, when
/// it cannot be read or is no shared library of this machine.
VELNOR_API std::vector<std::string> ReadNeededLibraries(std::filesystem::path const& file);

} // namespace Velnor::Proc
