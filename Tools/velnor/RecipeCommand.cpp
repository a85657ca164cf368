#include "Tools/velnor/RecipeCommand.h"

#include "Tools/velnor/Failure.h"
#include "Tools/velnor/Recipe.h"
#include "Tools/velnor/RecipeStore.h"
#include "Tools/velnor/ShellText.h"
#include "Tools/velnor/Suggestions.h"
#include "Tools/velnor/TextFile.h"
#include "Tools/velnor/TextWrap.h"

#include <algorithm>

namespace Velnor::Tool {
namespace {

namespace fs = std::filesystem;

/// Files that are named relative to the current folder are found from everywhere else too.
std::string MakeAbsolute(EffectArgument::Parameter const& parameter) {
    return parameter.key == INPUT_PARAMETER && !parameter.value.starts_with('{')
               ? fs::absolute(parameter.value).lexically_normal().string()
               : parameter.value;
}

/// Variables that braces in the parameters name.
void AddVariables(std::string const& text, Recipe& recipe) {
    for (std::size_t open = text.find('{'); open != std::string::npos; open = text.find('{', open + 1)) {
        std::size_t const close = text.find('}', open);
        if (close == std::string::npos) return;
        std::string const name = text.substr(open + 1, close - open - 1);
        if (std::ranges::count(recipe.variables, name, &Recipe::Variable::name) == 0)
            recipe.variables.push_back({name, {}, {}});
    }
}

Recipe MakeRecipe(SaveRecipeOptions const& options) {
    Recipe recipe{options.name, options.description, {}, {}};
    for (std::string const& effect : options.effects) {
        EffectArgument argument = ParseEffectArgument(effect);
        for (EffectArgument::Parameter& parameter : argument.parameters) {
            AddVariables(parameter.value, recipe);
            parameter.value = MakeAbsolute(parameter);
        }
        recipe.steps.push_back({argument.name, argument.implementation, argument.parameters});
    }
    return recipe;
}

/// Whether a text has a variable for which there is no value yet.
bool IsOpen(std::string const& text, Recipe const& recipe) {
    return std::ranges::any_of(recipe.variables, [&](Recipe::Variable const& variable) {
        return !variable.defaultText && text.find("{" + variable.name + "}") != std::string::npos;
    });
}

void Require(Recipe const& recipe, EffectCatalogue const& catalogue) {
    Recipe known = recipe; // What is open cannot be checked.
    for (Recipe::Step& step : known.steps)
        std::erase_if(step.parameters, [&](EffectArgument::Parameter const& one) {
            return one.key != INPUT_PARAMETER && IsOpen(one.value, recipe);
        });
    std::vector<VariableValue> anything;
    for (Recipe::Variable const& variable : recipe.variables)
        if (!variable.defaultText) anything.push_back({variable.name, "x"});
    for (EffectArgument const& argument : FillRecipe(known, anything)) RequireEffect(argument, catalogue);
}

std::string DescribeChain(Recipe const& recipe) {
    std::string text;
    for (Recipe::Step const& step : recipe.steps) text += (text.empty() ? "" : ", ") + step.effect;
    return text;
}

/// What a person reads of a recipe in the list, or that it cannot be read.
std::string Summarise(RecipeFile const& file) {
    try {
        Recipe const recipe = ReadRecipe(file.path);
        return (recipe.description.empty() ? DescribeChain(recipe) : recipe.description) +
               (file.origin == "shipped" ? "" : " (" + file.origin + ")");
    } catch (Failure const& failure) {
        return failure.what();
    }
}

/// As -e takes it; a value that would be taken apart is quoted.
std::string TypeEffect(EffectArgument const& argument) {
    std::string text = argument.name + (argument.implementation.empty() ? "" : "/" + argument.implementation);
    char separator = ':';
    for (EffectArgument::Parameter const& parameter : argument.parameters) {
        bool const isQuoted =
            parameter.value.find(',') != std::string::npos || parameter.value.find_first_of("\"'") == 0;
        std::string value;
        for (char const c : parameter.value) value.append(c == '"' && isQuoted ? 2 : 1, c);
        text += separator + parameter.key + "=" + (isQuoted ? "\"" + value + "\"" : value);
        separator = ',';
    }
    return text;
}

void RequireUsed(std::vector<VariableValue> const& values, std::vector<Recipe> const& recipes) {
    std::vector<std::string> known;
    for (Recipe const& recipe : recipes)
        for (Recipe::Variable const& variable : recipe.variables) known.push_back(variable.name);
    for (VariableValue const& value : values)
        if (std::ranges::count(known, value.key) == 0)
            throw WrongCall("--set " + value.key + ": there is no such variable" +
                            (known.empty() ? "; the recipe has none" : SuggestNearest(value.key, known)));
}

} // namespace

std::string SaveRecipe(SaveRecipeOptions const& options) {
    RequireRecipeName(options.name);
    if (options.effects.empty()) throw WrongCall("recipe save: no effect is given; -e names one");
    EffectCatalogue const catalogue(options.plugins);
    Recipe const recipe = MakeRecipe(options);
    Require(recipe, catalogue);
    fs::path const file = GetUsersRecipeFolder() / (options.name + ".json");
    WriteTextFile(file, Write(ToJson(recipe, catalogue)), options.replace);
    return file.string() + "\n";
}

std::string ListRecipesAsText() {
    std::vector<RecipeFile> const recipes = ListRecipes();
    std::size_t width = 0;
    for (RecipeFile const& recipe : recipes) width = std::max(width, recipe.name.size());
    std::string text;
    for (RecipeFile const& recipe : recipes) text += FormatEntry(recipe.name, Summarise(recipe), 0, width + 2);
    return text;
}

std::string ListRecipesAsJson() {
    Json document = Json::array();
    for (RecipeFile const& file : ListRecipes())
        document.push_back(
            {{"name", file.name}, {"file", file.path.string()}, {"origin", file.origin}, {"summary", Summarise(file)}});
    return Write(document);
}

std::string ShowRecipe(std::string const& name) {
    fs::path const file = FindRecipe(name);
    ReadRecipe(file); // What cannot be used is an error, not shown.
    return ReadTextFile(file);
}

std::string CheckRecipes(std::vector<std::string> const& recipes, std::vector<std::string> const& plugins) {
    EffectCatalogue const catalogue(plugins);
    std::string text;
    for (std::string const& name : recipes) {
        fs::path const file = FindRecipe(name);
        Recipe const recipe = ReadRecipe(file);
        try {
            Require(recipe, catalogue);
        } catch (Failure const& failure) {
            throw Failure(failure.GetCode(), file.string() + ": " + failure.what());
        }
        text += file.string() + ": good: " + DescribeChain(recipe) + "\n";
    }
    return text;
}

std::string FormatRecipeSchema(std::vector<std::string> const& plugins) {
    return Write(MakeRecipeSchema(EffectCatalogue(plugins)));
}

std::vector<std::string> UseRecipes(std::vector<std::string> const& recipes, std::vector<std::string> const& values,
                                    fs::path const& photo) {
    std::vector<VariableValue> set;
    for (std::string const& value : values) set.push_back(ParseVariableValue(value));
    std::vector<Recipe> read;
    for (std::string const& name : recipes) read.push_back(ReadRecipe(FindRecipe(name, photo)));
    RequireUsed(set, read);
    std::vector<std::string> effects;
    for (Recipe const& recipe : read)
        for (EffectArgument const& argument : FillRecipe(recipe, set)) effects.push_back(TypeEffect(argument));
    return effects;
}

} // namespace Velnor::Tool
