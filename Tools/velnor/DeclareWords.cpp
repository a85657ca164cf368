// The commands that print the words of all commands: manual pages and completion. They are declared last.

#include "Tools/velnor/Command.h"
#include "Tools/velnor/Completion.h"
#include "Tools/velnor/Console.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/Manual.h"
#include "Tools/velnor/Suggestions.h"
#include "Tools/velnor/Words.h"

#include <algorithm>
#include <memory>

namespace Velnor::Tool {
namespace {

/// The page's command, or the program for no name.
CLI::App const& FindPage(CLI::App const& app, std::string const& name) {
    if (name.empty() || name == "velnor") return app;
    std::vector<std::string> names;
    for (CLI::App const* const command : GetRunnableCommands(app)) {
        if (GetCommandName(*command) == name) return *command;
        names.push_back(GetCommandName(*command));
    }
    throw WrongCall("manual: there is no command \"" + name + "\"" + SuggestNearest(name, names));
}

std::string JoinWords(std::vector<std::string> const& words) {
    std::string text;
    for (std::string const& word : words) text.append(text.empty() ? "" : " ").append(word);
    return text;
}

std::string FormatCandidates(std::vector<Candidate> const& candidates) {
    std::string text;
    for (Candidate const& one : candidates)
        text += one.text + (one.help.empty() ? "" : "\t" + ToOneLine(one.help)) + "\n";
    return text;
}

} // namespace

Command DeclareManual(CLI::App& app) {
    struct Given {
        std::vector<std::string> command;
        std::string folder;
    };
    auto const given = std::make_shared<Given>();
    CLI::App* const manual =
        app.add_subcommand("manual", "Print the manual page of a command, to be read by `man -l -`");
    manual->add_option("command", given->command, "Command, such as apply; else the page is that of velnor")
        ->type_name("COMMAND");
    manual->add_option("--into", given->folder, "Write the pages of all commands into this folder instead")
        ->type_name("FOLDER");
    manual->allow_extras();
    return {manual, [given, &app] {
                if (given->folder.empty())
                    Print(FormatManual(FindPage(app, JoinWords(given->command))));
                else
                    WriteManuals(app, given->folder);
                return ExitCode::Done;
            }};
}

Command DeclareCompletion(CLI::App& app) {
    auto const shell = std::make_shared<std::string>();
    CLI::App* const completion =
        app.add_subcommand("completion", "Print the script that lets a shell complete what is typed for velnor");
    completion->add_option("shell", *shell, "The shell: bash, zsh or fish")->type_name("bash|zsh|fish");
    completion->allow_extras();
    completion->footer("  source <(velnor completion bash)                     for this shell\n"
                       "  velnor completion fish >~/.config/fish/completions/velnor.fish");
    return {completion, [shell] {
                if (shell->empty()) throw WrongCall("completion: no shell is given; there is bash, zsh and fish");
                Print(FormatCompletionScript(*shell));
                return ExitCode::Done;
            }};
}

Command DeclareComplete(CLI::App& app) {
    auto const words = std::make_shared<std::vector<std::string>>();
    CLI::App* const complete = app.add_subcommand("complete", "Print what the last word may become");
    complete->group(""); // For the scripts of the shells alone.
    complete->add_option("words", *words, "What has been typed after velnor");
    complete->allow_extras();
    return {complete, [words, &app] {
                Print(FormatCandidates(Complete(app, *words)));
                return ExitCode::Done;
            }};
}

} // namespace Velnor::Tool
