#pragma once

#include <string>
#include <string_view>

namespace Velnor::Tool {

/// The text as a shell reads it as one word.
std::string QuoteForShell(std::string_view text);

} // namespace Velnor::Tool
