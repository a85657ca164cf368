#pragma once

#include <filesystem>
#include <string_view>

namespace Velnor::Proc::Check {

/// Puts another function in the place of one that a loaded library imports, for the calls of that library alone.
/// @param library      the file as it was loaded
/// @param symbol       how the imported function's name begins
/// @param replacement  of the same type
/// @return the function that was there; null where the library imports none of that name, or is not loaded
/// Throws std::system_error when the system does not let the library's table be written.
void* RedirectImport(std::filesystem::path const& library, std::string_view symbol, void* replacement);

} // namespace Velnor::Proc::Check
