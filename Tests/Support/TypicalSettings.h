#pragma once

#include "Proc/Interfaces/Settings.h"
#include "Proc/Interfaces/SettingsText.h"

#include <memory>

namespace Velnor::Proc::Testing {

/// The middle of each field's range, or its example: settings with which most effects have work to do.
inline std::unique_ptr<Settings> TypicalSettings(SettingsType const& type) {
    std::unique_ptr<Settings> settings = type.create();
    for (SettingsField const& field : type.describe())
        if (!field.isOutput) field.parse(*settings, field.example);
    return settings;
}

} // namespace Velnor::Proc::Testing
