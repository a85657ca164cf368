#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Velnor::Tool {

/// The number of letters to insert, drop, replace or swap with a neighbour that lead from one text to the other
/// (optimal string alignment; Damerau, "A technique for computer detection and correction of spelling errors", 1964).
std::size_t EditDistance(std::string_view a, std::string_view b);

/// The known names that somebody who typed this may have meant, the nearest first, at most three.
std::vector<std::string> FindNearest(std::string_view typed, std::vector<std::string> const& known);

/// "; did you mean a or b?", to end a message with; what else there is when nothing is near, and `otherwise` when that
/// would be a long list.
std::string SuggestNearest(std::string_view typed, std::vector<std::string> const& known,
                           std::string_view otherwise = {});

/// "a", "a or b", "a, b or c".
std::string JoinAlternatives(std::vector<std::string> const& names, std::string_view conjunction = "or");

/// Letters of ASCII in lower case, the rest as it is.
std::string ToLower(std::string_view text);

} // namespace Velnor::Tool
