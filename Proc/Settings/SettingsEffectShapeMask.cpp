#include "Proc/Settings/SettingsEffectShapeMask.h"

namespace Velnor::Proc {

bool SettingsEffectShapeMask::IsForegroundOnly() const {
    return static_cast<unsigned char>(valueForeground) == static_cast<unsigned char>(valueBackground);
}

} // namespace Velnor::Proc
