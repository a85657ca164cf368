#pragma once

namespace Velnor::Tool {

/// Sends the log to standard error, never to files, and silences all below a warning.
void PrepareLogging();

/// Shows informational lines, and verbose ones up to this level; 0 leaves them silent.
void SetVerboseLevel(int level);

} // namespace Velnor::Tool
