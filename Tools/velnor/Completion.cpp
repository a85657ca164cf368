#include "Tools/velnor/Completion.h"

#include "Tools/velnor/EffectCompletion.h"
#include "Tools/velnor/Words.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace Velnor::Tool {
namespace {

namespace fs = std::filesystem;
using Candidates = std::vector<Candidate>;

void Add(Candidates& candidates, std::string const& begun, std::string text, std::string help = {}) {
    if (text.starts_with(begun)) candidates.push_back({std::move(text), std::move(help)});
}

std::vector<std::string> SplitAlternatives(std::string_view type) {
    std::vector<std::string> parts;
    for (;;) {
        std::size_t const end = std::min(type.find('|'), type.size());
        parts.emplace_back(type.substr(0, end));
        if (end == type.size()) return parts;
        type.remove_prefix(end + 1);
    }
}

/// Whether a value of this type names a file.
bool IsFile(std::string const& type) {
    for (char const* const file : {"FILE", "PHOTO", "STROKES", "OUT", "FOLDER", "RECIPE"})
        if (type == file) return true;
    return false;
}

/// The values of an option or a positional, by the name of its type. `before` is what of the word stands before it.
void AddValues(Candidates& candidates, std::string const& type, std::string const& before, std::string const& begun,
               std::vector<std::string> const& plugins) {
    Candidates values;
    if (type.find('|') != std::string::npos)
        for (std::string const& choice : SplitAlternatives(type)) Add(values, begun, choice);
    if (type == "EFFECT") values = CompleteEffect(begun, plugins);
    if (IsFile(type)) values = CompleteFile(begun);
    for (Candidate& value : values) candidates.push_back({before + value.text, std::move(value.help)});
}

/// What has been typed of a call, up to the word at the cursor.
struct Typed {
    CLI::App const* command;
    CLI::Option const* open = nullptr; ///< The option whose value is at the cursor.
    std::vector<std::string> plugins = {};
    bool areOptionsOver = false;
};

CLI::App const* FindCommand(CLI::App const& app, std::string const& name) {
    std::vector<CLI::App const*> const commands = GetShownCommands(app);
    auto const found = std::ranges::find(commands, name, [](CLI::App const* one) { return one->get_name(); });
    return found == commands.end() ? nullptr : *found;
}

void Read(Typed& typed, std::string const& word) {
    if (typed.open != nullptr) {
        if (typed.open->check_lname("plugin")) typed.plugins.push_back(word);
        typed.open = nullptr;
        return;
    }
    if (word == "--") typed.areOptionsOver = true;
    if (typed.areOptionsOver) return;
    CLI::Option const* const option = word.starts_with('-') ? FindOption(*typed.command, word) : nullptr;
    if (option != nullptr && TakesValue(*option)) typed.open = option;
    if (CLI::App const* const inner = FindCommand(*typed.command, word); inner != nullptr) typed.command = inner;
}

void AddOptions(Candidates& candidates, CLI::App const& command, std::string const& begun) {
    for (CLI::Option const* const option : command.get_options()) {
        for (std::string const& name : option->get_lnames())
            Add(candidates, begun, "--" + name, option->get_description());
        if (begun.size() < 2)
            for (std::string const& name : option->get_snames())
                Add(candidates, begun, "-" + name, option->get_description());
    }
}

void AddPositionals(Candidates& candidates, Typed const& typed, std::string const& begun) {
    for (CLI::Option const* const option : typed.command->get_options())
        if (option->get_positional()) AddValues(candidates, option->get_type_name(), "", begun, typed.plugins);
}

} // namespace

std::vector<Candidate> CompleteFile(std::string const& begun) {
    fs::path const typed(begun);
    std::string const before = begun.substr(0, begun.rfind('/') + 1);
    std::string const name = begun.substr(before.size());
    Candidates found;
    std::error_code error;
    for (fs::directory_iterator file(before.empty() ? fs::path(".") : fs::path(before), error), end;
         !error && file != end; file.increment(error)) {
        std::string const text = file->path().filename().string();
        if (text.starts_with('.') && !name.starts_with('.')) continue;
        std::error_code ignored;
        Add(found, begun, before + text + (file->is_directory(ignored) ? "/" : ""));
    }
    std::ranges::sort(found, {}, &Candidate::text);
    return found;
}

std::vector<Candidate> Complete(CLI::App const& program, std::vector<std::string> const& words) {
    Typed typed{&program};
    std::string const begun = words.empty() ? std::string() : words.back();
    for (std::size_t i = 0; i + 1 < words.size(); ++i) Read(typed, words[i]);

    Candidates candidates;
    if (typed.open != nullptr) {
        AddValues(candidates, typed.open->get_type_name(), "", begun, typed.plugins);
        return candidates;
    }
    if (!typed.areOptionsOver && begun.starts_with("-")) {
        std::size_t const equals = begun.find('=');
        CLI::Option const* const option = FindOption(*typed.command, begun.substr(0, equals));
        if (equals == std::string::npos)
            AddOptions(candidates, *typed.command, begun);
        else if (option != nullptr)
            AddValues(candidates, option->get_type_name(), begun.substr(0, equals + 1), begun.substr(equals + 1),
                      typed.plugins);
        return candidates;
    }
    for (CLI::App const* const command : GetShownCommands(*typed.command))
        Add(candidates, begun, command->get_name(), command->get_description());
    AddPositionals(candidates, typed, begun);
    return candidates;
}

} // namespace Velnor::Tool
