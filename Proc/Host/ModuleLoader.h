#pragma once

#include "Core/Export.h"

#include <filesystem>

namespace Velnor::Proc {

/// Opens a module of the host: a library that came with it (see GetInstalledFolder) and stays open. Functions are
/// bound when they are first called. Null when it cannot be opened: dlerror() says why. Throws std::bad_alloc when
/// there is too little memory.
VELNOR_API void* OpenModule(std::filesystem::path const& file);

} // namespace Velnor::Proc
