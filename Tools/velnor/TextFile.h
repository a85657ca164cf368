#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace Velnor::Tool {

/// Writes a file, whole or not at all, and the folders that it is to stand in. Throws Failure (output) and what
/// Proc::OutputFile throws, as for a file that is there and may not be replaced.
void WriteTextFile(std::filesystem::path const& file, std::string_view text, bool replace);

/// Throws Failure (input) for a file that cannot be read, and for one of more than 16 megabytes.
std::string ReadTextFile(std::filesystem::path const& file);

} // namespace Velnor::Tool
