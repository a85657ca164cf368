#pragma once

#include "Core/Export.h"

#include <filesystem>
#include <vector>

namespace Velnor::Proc {

class Registry;

/// Loads a plug-in and merges the effects that it registers. Their origin is its path, or its file name where it came
/// with the host. Throws ProcException, the registry as it was, when the file is missing, is no library, was built
/// against another version of the contract (which is found out without running any of it), has no Registrator, or when
/// that throws or registers nothing.
VELNOR_API void LoadPluginFile(std::filesystem::path const& file, Registry& registry);

/// The folder of what the host loads when it needs it: "velnor" beside its own library. Empty when the system does not
/// tell where that is.
VELNOR_API std::filesystem::path GetInstalledFolder();

/// The plug-ins that came with the host, ordered by name: the libraries in the folder "velnor/plugins" beside its own
/// library. Empty when there is no such folder. The folder is the plug-ins' alone, so nothing is run to find out.
VELNOR_API std::vector<std::filesystem::path> FindInstalledPlugins();

} // namespace Velnor::Proc
