#pragma once

#include "Tools/velnor/BatchOptions.h"
#include "Tools/velnor/ExitCodes.h"
#include "Tools/velnor/FileOptions.h"

#include <string>
#include <vector>

namespace Velnor::Tool {

/// What `velnor apply` is asked to do.
struct ApplyOptions {
    std::vector<std::string> photos;
    std::vector<std::string> effects; ///< As typed.
    std::vector<std::string> recipes; ///< Files that some of the effects come from.
    std::string output;               ///< Empty: nothing is written.
    std::string format;               ///< Of the picture when the output is standard output.
    std::vector<std::string> plugins;
    FileOptions files;
    BatchOptions batch;
    bool showStatistics = false;
    bool asJson = false;
    bool isVerbose = false;
};

/// Runs the effects on each photograph, several at once, and writes the results; what is printed has the order of the
/// photographs. What is wrong with the call is thrown (Failure) before any work. A photograph that fails is told on
/// stderr and the others are done. Returns Done; SomeFailed when at least one was done; the code of the first failure
/// when none was; Stopped after a signal.
ExitCode RunApply(ApplyOptions const& options);

} // namespace Velnor::Tool
