#pragma once

#include "Tools/velnor/Completion.h"

namespace Velnor::Tool {

/// Effects that begin so, their implementations after a '/', their parameters after ':' and ',', and the values of one
/// after its '='.
std::vector<Candidate> CompleteEffect(std::string const& begun, std::vector<std::string> const& plugins);

/// Files and folders that begin so; folders end with a slash.
std::vector<Candidate> CompleteFile(std::string const& begun);

} // namespace Velnor::Tool
