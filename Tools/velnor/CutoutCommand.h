#pragma once

#include "Tools/velnor/ExitCodes.h"
#include "Tools/velnor/FileOptions.h"

#include <string>
#include <vector>

namespace Velnor::Tool {

/// What `velnor cutout` is asked to do.
struct CutoutOptions {
    /// A setting of the cut-out effect, as it is typed.
    struct Setting {
        std::string name;
        std::string value;
    };
    CutoutOptions(); ///< The settings that a person may want to change, with their defaults.

    std::vector<std::string> photos;
    std::string strokes; ///< A file, a folder or a pattern, as the output is.
    std::string output;
    std::string mask; ///< Where the masks are written; empty for nowhere.
    std::vector<Setting> settings;
    double feather = 1; ///< Pixels.
    FileOptions files;
    bool asJson = false;
    std::vector<std::string> plugins;
};

/// Help for one of the settings.
std::string DescribeCutoutSetting(std::string const& name);

/// Writes each photograph with the mask of the object as its alpha, times that which it had. Warns on stderr when
/// little of what is painted are marks. What is wrong with the call is thrown (Failure) before any work. A photograph
/// that fails is told on stderr and the others are done: strokes of another size than the photograph or of one kind
/// only, and what reading and writing throw. Returns as RunApply does.
ExitCode RunCutout(CutoutOptions const& options);

} // namespace Velnor::Tool
