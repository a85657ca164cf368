#pragma once

namespace Velnor::Tool {

/// The command `velnor`: reads its arguments, does what they ask and returns the process's exit code. Never throws.
int RunCommandLine(int argumentsCount, char const* const* arguments);

} // namespace Velnor::Tool
