#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace Velnor::Tool {

/// What `velnor recipe save` is asked to do.
struct SaveRecipeOptions {
    std::string name;
    std::vector<std::string> effects; ///< As typed for -e.
    std::string description;
    std::vector<std::string> plugins;
    bool replace = false;
};

/// Saves a recipe in the user's folder and says where. Throws Failure: wrong call, or an output that exists.
std::string SaveRecipe(SaveRecipeOptions const& options);

std::string ListRecipesAsText();
std::string ListRecipesAsJson();

/// The recipe's text, and for a person how it is used.
std::string ShowRecipe(std::string const& name);

/// Throws Failure for the first of them with something wrong, and says of each other what it does.
std::string CheckRecipes(std::vector<std::string> const& recipes, std::vector<std::string> const& plugins);

std::string FormatRecipeSchema(std::vector<std::string> const& plugins);

/// The effects of recipes, as they are typed for -e, with the values `NAME=VALUE` in them; each value is used by at
/// least one of the recipes. `photo` is the first photograph; recipes may lie beside it. Throws Failure.
std::vector<std::string> UseRecipes(std::vector<std::string> const& recipes, std::vector<std::string> const& values,
                                    std::filesystem::path const& photo);

} // namespace Velnor::Tool
