#pragma once

#include <functional>
#include <string>

namespace Velnor::Tool {

/// Calls visit with each name in a list, `-` for standard input: what stands on a line each, without the line's end of
/// either kind, or, where there is a zero byte in it, what stands before each of those. Empty ones are left out. Throws
/// Failure (input) when the list cannot be read, or a name is longer than any file's can be.
void ForEachName(std::string const& list, std::function<void(std::string const& name)> const& visit);

} // namespace Velnor::Tool
