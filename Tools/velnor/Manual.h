#pragma once

#include <CLI/App.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace Velnor::Tool {

/// The manual page (man(7)) of the program or of one of its commands, made from its declared words.
std::string FormatManual(CLI::App const& command);

/// Writes the pages of the program and of each command into a folder, as velnor.1 and velnor-COMMAND.1; pages that are
/// there already are replaced. Throws Failure (output).
void WriteManuals(CLI::App const& program, std::filesystem::path const& folder);

} // namespace Velnor::Tool
