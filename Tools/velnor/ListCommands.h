#pragma once

#include <string>
#include <vector>

namespace Velnor::Tool {

/// What `velnor effects` prints: the effects in which all wanted words are found, by family with what they do, or every
/// registered implementation of them as a list of JSON. Throws Failure (wrong call) when there is none.
std::string ListEffects(std::vector<std::string> const& plugins, std::vector<std::string> const& wanted, bool asJson);

/// What `velnor describe` prints: an effect's parameters and an example. Throws Failure (wrong call) for an unknown
/// effect.
std::string DescribeEffect(std::string const& effect, std::vector<std::string> const& plugins, bool asJson);

/// The JSON Schema of one step of a chain, of that effect or, with an empty name, of any.
std::string FormatSchema(std::string const& effect, std::vector<std::string> const& plugins);

} // namespace Velnor::Tool
