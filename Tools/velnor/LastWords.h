#pragma once

namespace Velnor::Tool {

/// From here on what would end the process without a word ends it with one line on standard error and an exit code: an
/// exception that cannot be thrown on, a library that gives up, and, when memory is short, a signal from a library that
/// did not expect an allocation to fail. Other crashes stay what they are. Before any thread is started.
void PrepareLastWords();

} // namespace Velnor::Tool
