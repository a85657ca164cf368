#pragma once

#include "Proc/Interfaces/SettingsText.h"
#include "Tools/velnor/FileOptions.h"

#include <CLI/App.hpp>
#include <CLI/Validators.hpp>

#include <string>
#include <vector>

namespace Velnor::Tool {

/// A number's own check, in the words that the parameters of effects have. The parser puts the option's name before it.
template <class Number>
CLI::Validator Within(Number low, Number high) {
    using Form = Proc::TextForm<Number>;
    return {[=](std::string& text) -> std::string {
                try {
                    Number const value = Form::Parse(text);
                    if (value >= low && value <= high) return {};
                    return text + " is outside the range " + Form::Print(low) + " to " + Form::Print(high);
                } catch (Proc::SettingsTextException const& error) {
                    return DescribeException(error);
                }
            },
            std::string()};
}

/// How much is logged.
struct LogOptions {
    int verbosity = 0;
    int level = 0;

    /// Sets the level. Returns whether there is something to log.
    bool Start() const;
};

/// Recipes to run, and values for their variables.
struct RecipeUse {
    std::vector<std::string> recipes;
    std::vector<std::string> values;
};

// Options that several commands have. What they fill in outlives the parser.

void AddEffectOption(CLI::App& command, std::vector<std::string>& effects);
void AddRecipeOptions(CLI::App& command, RecipeUse& use);
void AddPluginOption(CLI::App& command, std::vector<std::string>& plugins);
void AddJsonOption(CLI::App& command, bool& asJson);
void AddLogOptions(CLI::App& command, LogOptions& log);

/// Of the commands that read photographs.
void AddReadingOptions(CLI::App& command, FileOptions& files);

/// Of the commands that write photographs.
void AddWritingOptions(CLI::App& command, FileOptions& files);

} // namespace Velnor::Tool
