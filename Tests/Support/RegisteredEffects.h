#pragma once

// What the suites share that run over every effect in the registry, the plug-in's and the host's alike.

#include "Tests/Support/Pictures.h"
#include "Tests/Support/PluginHost.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>

namespace Velnor::Proc {

inline void PrintTo(RegisteredEffect const& effect, std::ostream* out) {
    *out << effect.classId << "/" << effect.implName;
}

namespace Testing {

inline std::string TestName(::testing::TestParamInfo<RegisteredEffect> const& info) {
    return info.param.classId + "_" + info.param.implName;
}

/// The middle of each field's range, or its example: settings with which most effects have work to do.
inline std::unique_ptr<Settings> TypicalSettings(SettingsType const& type) {
    std::unique_ptr<Settings> settings = type.create();
    for (SettingsField const& field : type.describe())
        if (!field.isOutput) field.parse(*settings, field.example);
    return settings;
}

} // namespace Testing
} // namespace Velnor::Proc
