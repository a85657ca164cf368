#pragma once

#include "Core/Export.h"

#include <filesystem>
#include <string>
#include <vector>

namespace Velnor::Proc {

/// Plug-ins that the user has put somewhere, and those that are left out.
struct VELNOR_API PluginPath {
    std::vector<std::filesystem::path> files; ///< In the order of the folders, in each by name; no file twice.
    std::vector<std::string> refusals;        ///< One sentence each: which folder or file, and why.
};

/// Looks in the folders of the environment variable VELNOR_PLUGIN_PATH, which are separated by colons, and then in the
/// user's own one, "velnor/plugins" in XDG_DATA_HOME or else in "~/.local/share". Libraries in them run in the user's
/// name, so what others can write to is refused: a folder or file of somebody else than the user and root, or that
/// everybody may write to, itself or a folder above it (but for those like /tmp, where nobody can replace what is
/// another's). A folder of the variable that is missing is told; the user's own need not be there. Nothing is run to
/// find out.
VELNOR_API PluginPath FindUserPlugins();

} // namespace Velnor::Proc
