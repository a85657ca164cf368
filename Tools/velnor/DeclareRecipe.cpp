#include "Tools/velnor/Command.h"
#include "Tools/velnor/Console.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/OptionGroups.h"
#include "Tools/velnor/RecipeCommand.h"

#include <memory>

namespace Velnor::Tool {
namespace {

constexpr char const* FOOTER =
    R"(A recipe is a chain of effects with a name, in a JSON file:
  { "version": 1, "name": "warm", "description": "Warmer, and darker at the edges",
    "variables": { "warmth": { "default": 12 } },
    "effects": [ { "effect": "tint-temperature",
                   "parameters": { "temperature": "{warmth}" } },
                 { "effect": "vignette" } ] }
  velnor recipe save film -e vignette -e noise-video:strength={grain}
  velnor apply photo.jpg --recipe warm --set warmth=20 -o warm.jpg
Recipes are looked for beside the photographs, in the current folder, in velnor/recipes of $XDG_CONFIG_HOME or
~/.config, where they are saved, and among those that came with velnor. Files that a recipe names as input lie
beside it. `velnor recipe schema` prints the JSON Schema.)";

struct Given {
    std::vector<std::string> recipes;
    std::vector<std::string> plugins;
    bool asJson = false;
};

Command DeclareSave(CLI::App& recipe) {
    auto const given = std::make_shared<SaveRecipeOptions>();
    CLI::App* const save = recipe.add_subcommand("save", "Save a chain of effects as a recipe");
    save->add_option("name", given->name, "Name of the recipe: small letters, digits and hyphens")->type_name("NAME");
    AddEffectOption(*save, given->effects);
    save->add_option("--description", given->description, "What the recipe does, in a line")->type_name("TEXT");
    save->add_flag("-f,--force", given->replace, "Replace the recipe of that name");
    AddPluginOption(*save, given->plugins);
    return {save, [given] {
                Print(SaveRecipe(*given));
                return ExitCode::Done;
            }};
}

Command DeclareList(CLI::App& recipe) {
    auto const given = std::make_shared<Given>();
    CLI::App* const list = recipe.add_subcommand("list", "List the recipes that there are");
    AddJsonOption(*list, given->asJson);
    list->allow_extras();
    return {list, [given] {
                Print(given->asJson ? ListRecipesAsJson() : ListRecipesAsText());
                return ExitCode::Done;
            }};
}

/// A command on recipes that are named.
Command DeclareOn(CLI::App& recipe, std::string const& name, std::string const& help,
                  std::function<std::string(Given const&)> const& work) {
    auto const given = std::make_shared<Given>();
    CLI::App* const command = recipe.add_subcommand(name, help);
    command->add_option("recipes", given->recipes, "Names or files of recipes")->type_name("RECIPE");
    AddPluginOption(*command, given->plugins);
    return {command, [given, name, work] {
                if (given->recipes.empty()) throw WrongCall("recipe " + name + ": no recipe is given");
                Print(work(*given));
                return ExitCode::Done;
            }};
}

Command DeclareSchema(CLI::App& recipe) {
    auto const given = std::make_shared<Given>();
    CLI::App* const schema = recipe.add_subcommand("schema", "Print the JSON Schema of recipes");
    AddPluginOption(*schema, given->plugins);
    return {schema, [given] {
                Print(FormatRecipeSchema(given->plugins));
                return ExitCode::Done;
            }};
}

} // namespace

std::vector<Command> DeclareRecipe(CLI::App& app) {
    CLI::App* const recipe = app.add_subcommand("recipe", "Save, list, show and check chains of effects with a name");
    recipe->require_subcommand(0, 1);
    recipe->allow_extras();
    recipe->footer(FOOTER);
    return {DeclareSave(*recipe), DeclareList(*recipe),
            DeclareOn(*recipe, "show", "Print recipes",
                      [](Given const& given) {
                          std::string text;
                          for (std::string const& name : given.recipes) text += ShowRecipe(name);
                          return text;
                      }),
            DeclareOn(*recipe, "check", "Say whether recipes are good: form, effects, parameters and values",
                      [](Given const& given) { return CheckRecipes(given.recipes, given.plugins); }),
            DeclareSchema(*recipe)};
}

} // namespace Velnor::Tool
