#pragma once

#include "Tools/check/CheckPlugin.h"
#include "Tools/velnor/ExitCodes.h"

#include <string>

namespace Velnor::Tool {

/// What `velnor check` is asked for.
struct CheckArguments {
    Proc::Check::CheckOptions check;
    std::string plugin; ///< As it is typed.
    int timeLimit = 60; ///< Seconds.
    bool asJson = false;
};

/// Checks a plug-in and prints one line for each promise that is broken. Throws Failure for a wrong call and for a file
/// that is not there.
ExitCode RunCheck(CheckArguments const& arguments);

} // namespace Velnor::Tool
