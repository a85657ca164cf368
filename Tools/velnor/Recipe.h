#pragma once

#include "Tools/velnor/EffectArgument.h"
#include "Tools/velnor/EffectCatalogue.h"
#include "Tools/velnor/Json.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Velnor::Tool {

/// A chain of effects that has a name. As a file it is a JSON document:
///
///     { "version": 1, "name": "warm-portrait", "description": "...",
///       "variables": { "warmth": { "description": "...", "default": 12 } },
///       "effects": [ { "effect": "tint-temperature", "parameters": { "temperature": "{warmth}" } } ] }
///
/// A variable in braces stands for its value in any text among the parameters. Files that a recipe names (`input`) are
/// looked for beside it.
struct Recipe {
    static constexpr int VERSION = 1; ///< Of the format. A recipe of a later one is refused.

    struct Variable {
        std::string name;
        std::string description;
        std::optional<std::string> defaultText; ///< Without one the caller must give a value.
    };
    struct Step {
        std::string effect;
        std::string implementation; ///< Empty for the default one.
        std::vector<EffectArgument::Parameter> parameters;
    };
    std::string name;
    std::string description;
    std::vector<Variable> variables;
    std::vector<Step> steps;
};

/// A value for a variable, as `--set name=value` gives it. Throws Failure (wrong call) for text of another form.
using VariableValue = EffectArgument::Parameter;
VariableValue ParseVariableValue(std::string const& text);

/// Reads a recipe. Throws Failure (input), naming the file and the place in it: for a file that cannot be read, for
/// text that is no JSON, a later version, a member that is unknown (with the nearest one) or of the wrong type.
Recipe ReadRecipe(std::filesystem::path const& file);

Json ToJson(Recipe const& recipe, EffectCatalogue const& catalogue);

/// The steps with the variables' values in their places, as arguments of -e. Throws Failure (wrong call) for a value
/// of an unknown variable, a text with one and a variable without a value.
std::vector<EffectArgument> FillRecipe(Recipe const& recipe, std::vector<VariableValue> const& values);

/// Throws Failure (wrong call) for an effect, an implementation, a parameter or a value that is not known, as apply
/// does. Further pictures are not read.
void RequireEffect(EffectArgument const& argument, EffectCatalogue const& catalogue);

/// The JSON Schema of recipes, with all effects.
Json MakeRecipeSchema(EffectCatalogue const& catalogue);

} // namespace Velnor::Tool
