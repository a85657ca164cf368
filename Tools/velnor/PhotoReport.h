#pragma once

#include "Tools/velnor/EffectStep.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/OutputNames.h"

#include <string>
#include <vector>

namespace Velnor::Tool {

/// What became of one photograph.
struct PhotoReport {
    struct Found {
        std::string effect;
        std::vector<EffectResult> results;
    };
    OutputPlan plan;
    Report report;            ///< Code Done and no text when the output is written.
    std::vector<Found> found; ///< Of each effect that has results.
};

/// "name: value" a line, after the photograph's name when there are several.
std::string FormatResults(PhotoReport const& photo, bool namesPhoto);

/// A list of all photographs: input, output, code, error, results.
std::string FormatJson(std::vector<PhotoReport> const& photos);

} // namespace Velnor::Tool
