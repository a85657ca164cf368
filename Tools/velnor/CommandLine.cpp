#include "Tools/velnor/CommandLine.h"

#include "Proc/Effects/Kit/Targets.h"
#include "Tools/velnor/Command.h"
#include "Tools/velnor/Console.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/LastWords.h"
#include "Tools/velnor/Logging.h"
#include "Tools/velnor/Suggestions.h"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include <algorithm>

namespace Velnor::Tool {
namespace {

/// The options of a command as they are typed.
std::vector<std::string> GetOptionNames(CLI::App const& command) {
    std::vector<std::string> names;
    for (CLI::Option const* option : command.get_options())
        for (std::string const& name : option->get_lnames()) names.push_back("--" + name);
    return names;
}

void RequireNoExtras(CLI::App const& command) {
    for (std::string const& extra : command.remaining()) {
        if (extra == "--") continue; // The mark that options end here, which the parser leaves among the extras.
        std::string const typed = extra.substr(0, extra.find('='));
        if (typed.starts_with('-'))
            throw WrongCall(command.get_name() + " has no option " + typed +
                            SuggestNearest(typed, GetOptionNames(command),
                                           "`velnor " + command.get_name() + " --help` lists them"));
        throw WrongCall(command.get_name() + " takes no further argument \"" + extra + "\"");
    }
}

std::vector<std::string> GetCommandNames(CLI::App const& app) {
    std::vector<std::string> names;
    for (CLI::App const* const command : app.get_subcommands({})) names.push_back(command->get_name());
    return names;
}

/// What stands before the command is no part of it, and must not be dropped.
void RequireCommandFirst(CLI::App const& app) {
    std::vector<std::string> const extras = app.remaining();
    if (extras.empty()) return;
    std::string const& first = extras.front();
    if (first.starts_with('-'))
        throw WrongCall("there is no option " + first + " before a command" +
                        SuggestNearest(first, GetOptionNames(app), "`velnor --help` lists them"));
    throw WrongCall("there is no command \"" + first + "\"" + SuggestNearest(first, GetCommandNames(app)));
}

/// The parser's own complaints, in the words of this command.
std::string Explain(CLI::ParseError const& error, CLI::App const& app) {
    if (app.get_subcommands().empty()) return error.what();
    return app.get_subcommands().front()->get_name() + ": " + error.what();
}

/// What the environment says of the work that any command may do.
void RequireEnvironment() {
    try {
        Proc::Kernels::ReadTargetLimit();
    } catch (Proc::ProcException const& error) {
        throw WrongCall(DescribeException(error));
    }
}

ExitCode RunParsed(CLI::App const& app, std::vector<Command> const& commands) {
    RequireCommandFirst(app);
    if (app.get_subcommands().empty())
        throw WrongCall("no command is given; there is " + JoinAlternatives(GetCommandNames(app), "and") +
                        " (`velnor --help` tells more)");
    CLI::App const* const given = app.get_subcommands().front();
    RequireNoExtras(*given);
    RequireEnvironment();
    return std::ranges::find(commands, given, &Command::words)->run();
}

ExitCode Run(int argumentsCount, char const* const* given) {
    CLI::App app("Photo effects: runs the effects of the host and its plug-ins on photographs.", "velnor");
    app.set_version_flag("--version", "velnor " VELNOR_VERSION, "Print the version");
    app.allow_extras();
    app.require_subcommand(0, 1); // After the first, a word that is a command's name too is a photograph's.
    std::vector<Command> const commands = DeclareCommands(app);
    try {
        app.parse(argumentsCount, given);
    } catch (CLI::CallForHelp const&) {
        Print(app.help());
        return ExitCode::Done;
    } catch (CLI::CallForVersion const& version) {
        Print(version.what() + std::string("\n"));
        return ExitCode::Done;
    } catch (CLI::ParseError const& error) {
        RequireCommandFirst(app);
        for (CLI::App const* command : app.get_subcommands()) RequireNoExtras(*command);
        throw WrongCall(Explain(error, app));
    }
    return RunParsed(app, commands);
}

} // namespace

int RunCommandLine(int argumentsCount, char const* const* arguments) {
    try {
        PrepareConsole();
        PrepareLastWords();
        PrepareLogging();
        return static_cast<int>(Run(argumentsCount, arguments));
    } catch (...) {
        Report const report = ReportCurrentException();
        PrintError(report.text);
        return static_cast<int>(report.code);
    }
}

} // namespace Velnor::Tool
