#pragma once

#include "Tools/velnor/EffectStep.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/OutputNames.h"

#include <optional>
#include <string>
#include <vector>

namespace Velnor::Tool {

/// What became of one photograph, or of several that were joined.
struct PhotoReport {
    struct Found {
        std::filesystem::path input;
        std::string effect;
        std::optional<Place> place; ///< Of the piece that was looked at, when there are several.
        std::vector<EffectResult> results;
    };
    std::vector<std::filesystem::path> inputs;
    std::vector<std::filesystem::path> outputs; ///< What was written.
    Report report;                              ///< Code Done and no text when all was done.
    std::string skipped;                        ///< Why it was left out; empty when it was not.
    std::vector<Found> found;                   ///< Of each effect that has results.
    std::vector<std::string> warnings;

    /// Adds what reading or writing a photograph told, each text once, however many pieces say it.
    void Warn(std::filesystem::path const& input, std::vector<std::string> const& texts);
};

/// "photograph: effect: name=value" a line.
std::string FormatResults(PhotoReport const& photo);

/// The whole report in one line.
std::string FormatJson(PhotoReport const& photo);

} // namespace Velnor::Tool
