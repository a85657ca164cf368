#pragma once

#include "Tools/velnor/ExitCodes.h"

#include <CLI/App.hpp>

#include <functional>
#include <vector>

namespace Velnor::Tool {

/// A command of `velnor`: its words, as the parser holds them, and what it does when they have been read. Help, manual
/// pages and completion are made from the words.
struct Command {
    CLI::App* words = nullptr;
    std::function<ExitCode()> run; ///< Holds the options that parsing fills in.
};

Command DeclareApply(CLI::App& app);
Command DeclareCutout(CLI::App& app);
Command DeclareEffects(CLI::App& app);
Command DeclareDescribe(CLI::App& app);
Command DeclareCheck(CLI::App& app);
std::vector<Command> DeclareRecipe(CLI::App& app);
Command DeclarePreview(CLI::App& app);
Command DeclareGallery(CLI::App& app);
Command DeclareManual(CLI::App& app);
Command DeclareCompletion(CLI::App& app);
Command DeclareComplete(CLI::App& app);

/// All of them, in the order of the help.
std::vector<Command> DeclareCommands(CLI::App& app);

/// What the exit codes mean, for the end of a help.
extern char const* const EXIT_CODES;

} // namespace Velnor::Tool
