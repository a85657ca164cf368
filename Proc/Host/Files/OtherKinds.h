#pragma once

#include <string>
#include <string_view>

namespace Velnor::Proc::Files {

/// The name of a kind of file that people take for a photograph and that is not read, by its first bytes (a thousand
/// will do): "SVG". Empty for a kind that is not known.
std::string NameOtherKind(std::string_view head);

} // namespace Velnor::Proc::Files
