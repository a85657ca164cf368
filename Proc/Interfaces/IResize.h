#pragma once

#include "Core/Export.h"

#include <string>

namespace Velnor::Proc {

/// The resizer by what it does. The class identifier is that of SettingsResizer, which is what the effect takes.
struct VELNOR_API IResize {
    static std::string const CLASS_ID;
};

} // namespace Velnor::Proc
