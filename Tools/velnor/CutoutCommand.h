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

    std::string photo;
    std::string strokes;
    std::string output;
    std::vector<Setting> settings;
    double feather = 1; ///< Pixels.
    FileOptions files;
    std::vector<std::string> plugins;
};

/// Help for one of the settings.
std::string DescribeCutoutSetting(std::string const& name);

/// Writes the photograph with the mask of the object as its alpha, times that which it had. Warns on stderr when little
/// of what is painted are marks. Throws Failure: a wrong call, strokes of another size than the photograph or of one
/// kind only, an output without room for alpha; and what reading and writing throw.
ExitCode RunCutout(CutoutOptions const& options);

} // namespace Velnor::Tool
