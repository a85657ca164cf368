#include "Tools/velnor/CommandLine.h"

#include "Proc/Effects/Kit/Targets.h"
#include "Tools/velnor/Command.h"
#include "Tools/velnor/Console.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/Json.h"
#include "Tools/velnor/LastWords.h"
#include "Tools/velnor/Logging.h"
#include "Tools/velnor/Suggestions.h"
#include "Tools/velnor/Words.h"

#include <CLI/Config.hpp>

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

/// What shows the help of a command, or of the program.
std::string GetHelpCall(CLI::App const& command) {
    std::string const name = GetCommandName(command);
    return "velnor " + (name.empty() ? name : name + " ") + "--help";
}

void RequireNoExtras(CLI::App const& command) {
    for (std::string const& extra : command.remaining()) {
        if (extra == "--") continue; // The mark that options end here, which the parser leaves among the extras.
        std::string const typed = extra.substr(0, extra.find('='));
        if (typed.starts_with('-'))
            throw WrongCall(
                GetCommandName(command) + " has no option " + typed +
                SuggestNearest(typed, GetOptionNames(command), "`" + GetHelpCall(command) + "` lists them"));
        throw WrongCall(GetCommandName(command) + " takes no further argument \"" + extra + "\"");
    }
}

std::vector<std::string> GetCommandNames(CLI::App const& app) {
    std::vector<std::string> names;
    for (CLI::App const* const command : GetShownCommands(app)) names.push_back(command->get_name());
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

/// The command that is given, as "save" of "recipe save"; the program for none.
CLI::App const& FindGiven(CLI::App const& app) {
    std::vector<CLI::App*> const commands = app.get_subcommands();
    return commands.empty() ? app : FindGiven(*commands.front());
}

/// The parser's own complaints, in the words of this command.
std::string Explain(CLI::ParseError const& error, CLI::App const& app) {
    CLI::App const& given = FindGiven(app);
    return &given == &app ? error.what() : GetCommandName(given) + ": " + error.what();
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
    CLI::App const& given = FindGiven(app);
    auto const command = std::ranges::find(commands, &given, &Command::words);
    if (command == commands.end()) {
        if (&given != &app) RequireNoExtras(given);
        throw WrongCall((&given == &app ? "" : GetCommandName(given) + ": ") + "no command is given; there is " +
                        JoinAlternatives(GetCommandNames(given), "and") + " (`" + GetHelpCall(given) + "` tells more)");
    }
    RequireNoExtras(given);
    RequireEnvironment();
    return command->run();
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
        if (CLI::App const& command = FindGiven(app); &command != &app) RequireNoExtras(command);
        throw WrongCall(Explain(error, app));
    }
    return RunParsed(app, commands);
}

/// Of a call that failed, however far its parsing came.
bool AsksForJson(std::vector<std::string> const& words) {
    auto const end = std::ranges::find(words, "--");
    return std::find(words.begin(), end, "--json") != end;
}

/// The failure as one line of JSON on standard output, as far as that takes it.
void PrintReport(Report const& report) {
    try {
        Print(WriteLine({{"code", static_cast<int>(report.code)}, {"error", report.text}}));
    } catch (Failure const&) {
        return; // It is told on standard error.
    }
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
        if (AsksForJson({arguments, arguments + argumentsCount})) PrintReport(report);
        return static_cast<int>(report.code);
    }
}

} // namespace Velnor::Tool
