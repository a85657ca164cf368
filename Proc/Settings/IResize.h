#pragma once

#include "Core/Export.h"

#include <string>

namespace Velnor::Proc {

/// The class identifier under which effects ask for whatever resizes: the resizer, with SettingsResizer.
struct VELNOR_API IResize {
    static std::string const CLASS_ID;
};

} // namespace Velnor::Proc
