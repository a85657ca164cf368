#pragma once

#include "Proc/Interfaces/DefineSettings.h"

/// Defines the classes of VELNOR_SETTINGS_CLASSES(Do), a list of settings classes one a line, and a function that lists
/// them. The lists stand in several sources, since each class takes the compiler a while.
#define VELNOR_DEFINE_TYPES(Family)                                                                                    \
    VELNOR_SETTINGS_CLASSES(VELNOR_DEFINE_SETTINGS)                                                                    \
    std::vector<SettingsType const*> List##Family##Types() { return {VELNOR_SETTINGS_CLASSES(VELNOR_LIST_TYPE)}; }
#define VELNOR_LIST_TYPE(Class) &Class::StaticType(),
