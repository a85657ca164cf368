#pragma once

#include <CLI/App.hpp>

#include <string>
#include <string_view>
#include <vector>

namespace Velnor::Tool {

// What the declared words of the command say, for messages, manual pages and completion.

/// "apply", "recipe save": the command's name as it is typed, without the program's.
std::string GetCommandName(CLI::App const& command);

/// Commands of a command, or of the program, that are no secret.
std::vector<CLI::App const*> GetShownCommands(CLI::App const& app);

/// The commands that can be run: those without further commands.
std::vector<CLI::App const*> GetRunnableCommands(CLI::App const& app);

/// Whether a value follows the option.
bool TakesValue(CLI::Option const& option);

/// The option with that name, as in "--output" or "-o"; null for none.
CLI::Option const* FindOption(CLI::App const& command, std::string_view typed);

} // namespace Velnor::Tool
