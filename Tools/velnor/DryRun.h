#pragma once

#include "Tools/velnor/PhotoRun.h"

namespace Velnor::Tool {

/// Prints what would become of each photograph and why, as far as names and times tell: a line each, or an object with
/// `input`, `outputs`, `action` (write, replace, skip or fail), `reason` and `code`. Nothing is read, made or changed.
/// Returns what the run would.
ExitCode RunDry(Workshop const& shop, PlanReader plans);

} // namespace Velnor::Tool
