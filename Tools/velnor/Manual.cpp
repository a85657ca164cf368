#include "Tools/velnor/Manual.h"

#include "Tools/velnor/TextFile.h"
#include "Tools/velnor/Words.h"

#include <algorithm>

namespace Velnor::Tool {
namespace {

namespace fs = std::filesystem;

/// "velnor-apply", the name of the page.
std::string GetPageName(CLI::App const& command) {
    std::string name = command.get_parent() == nullptr ? "velnor" : "velnor " + GetCommandName(command);
    std::ranges::replace(name, ' ', '-');
    return name;
}

/// As the formatter takes it: backslashes and hyphens stand for themselves, and no line begins with a control
/// character.
std::string Escape(std::string_view text) {
    std::string escaped;
    for (char const c : text) {
        bool const beginsLine = escaped.empty() || escaped.back() == '\n';
        if (beginsLine && (c == '.' || c == '\'')) escaped += "\\&";
        if (c == '\\')
            escaped += "\\e";
        else if (c == '-')
            escaped += "\\-";
        else
            escaped += c;
    }
    return escaped;
}

std::string Bold(std::string_view text) { return "\\fB" + Escape(text) + "\\fR"; }
std::string Italic(std::string_view text) { return "\\fI" + Escape(text) + "\\fR"; }

std::string FormatNames(CLI::Option const& option) {
    std::string names;
    auto const add = [&](std::string const& name) { names += (names.empty() ? "" : ", ") + Bold(name); };
    if (option.get_positional()) return Italic(option.get_type_name());
    for (std::string const& name : option.get_snames()) add("-" + name);
    for (std::string const& name : option.get_lnames()) add("--" + name);
    return TakesValue(option) ? names + " " + Italic(option.get_type_name()) : names;
}

std::string FormatOptions(CLI::App const& command) {
    std::string text;
    for (CLI::Option const* const option : command.get_options()) {
        std::string const value = option->get_default_str();
        text += ".TP\n" + FormatNames(*option) + "\n" + Escape(option->get_description()) +
                (value.empty() ? "" : " (" + Escape(value) + " unless it is given)") + ".\n";
    }
    return text;
}

std::string FormatSynopsis(CLI::App const& command) {
    std::string text = Bold("velnor");
    if (command.get_parent() != nullptr) text += " " + Bold(GetCommandName(command));
    text += " [" + Italic("options") + "]";
    if (!GetShownCommands(command).empty()) text += " " + Italic("command");
    for (CLI::Option const* const option : command.get_options())
        if (option->get_positional())
            text += " " + Italic(option->get_type_name()) + (option->get_expected_max() > 1 ? "..." : "");
    return text + "\n";
}

std::string FormatCommands(CLI::App const& command) {
    std::string text;
    for (CLI::App const* const inner : GetShownCommands(command))
        text += ".TP\n" + Bold("velnor " + GetCommandName(*inner)) + "\n" + Escape(inner->get_description()) + ".\n";
    return text.empty() ? text : ".SH COMMANDS\n" + text;
}

std::string FormatNotes(CLI::App const& command) {
    if (command.get_footer().empty()) return {};
    return ".SH NOTES\n.nf\n" + Escape(command.get_footer()) + "\n.fi\n";
}

std::string FormatSeeAlso(CLI::App const& command) {
    CLI::App const* top = &command;
    while (top->get_parent() != nullptr) top = top->get_parent();
    std::string text;
    auto const add = [&](CLI::App const& other) {
        if (&other != &command) text += (text.empty() ? "" : ",\n") + Bold(GetPageName(other)) + "(1)";
    };
    add(*top);
    for (CLI::App const* const other : GetRunnableCommands(*top)) add(*other);
    return ".SH SEE ALSO\n" + text + "\n";
}

} // namespace

std::string FormatManual(CLI::App const& command) {
    std::string const name = GetPageName(command);
    return ".TH \"" + name + "\" 1 \"\" \"velnor " VELNOR_VERSION "\"\n.SH NAME\n" + Escape(name) + " \\- " +
           Escape(command.get_description()) + "\n.SH SYNOPSIS\n" + FormatSynopsis(command) + FormatCommands(command) +
           ".SH OPTIONS\n" + FormatOptions(command) + FormatNotes(command) + FormatSeeAlso(command);
}

void WriteManuals(CLI::App const& program, fs::path const& folder) {
    std::vector<CLI::App const*> pages = GetRunnableCommands(program);
    pages.push_back(&program);
    for (CLI::App const* const page : pages)
        WriteTextFile(folder / (GetPageName(*page) + ".1"), FormatManual(*page), true);
}

} // namespace Velnor::Tool
