#pragma once

#include "Proc/Interfaces/Settings.h"

#include <nlohmann/json.hpp>

#include <string>

namespace Velnor::Tool {

/// Members stand in the order in which they were added.
using Json = nlohmann::ordered_json;

/// A value of a field: numbers and switches as such, all else as its text.
Json ToJson(Proc::SettingsField const& field, std::string const& text);

/// The document as it is printed, over several lines or in one. Bytes that are no UTF-8, as a file name may hold, are
/// replaced.
std::string Write(Json const& document);
std::string WriteLine(Json const& document);

} // namespace Velnor::Tool
