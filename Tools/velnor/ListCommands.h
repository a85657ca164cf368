#pragma once

#include <string>
#include <vector>

namespace Velnor::Tool {

/// What `velnor effects` prints: every registered implementation, one a line or as a list of JSON.
std::string ListEffects(std::vector<std::string> const& plugins, bool asJson);

/// What `velnor describe` prints: an effect's parameters and an example. Throws Failure (wrong call) for an unknown
/// effect.
std::string DescribeEffect(std::string const& effect, std::vector<std::string> const& plugins, bool asJson);

} // namespace Velnor::Tool
