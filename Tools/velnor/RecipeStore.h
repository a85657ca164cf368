#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace Velnor::Tool {

/// Where recipes are looked for, the first first.
struct RecipeFolder {
    std::filesystem::path path;
    std::string origin; ///< "here", "yours", "shipped" or "beside the photographs".
};

/// The folder of the photographs, where one is given, the current one, the user's (velnor/recipes under
/// $XDG_CONFIG_HOME or ~/.config), that which came with the program.
std::vector<RecipeFolder> GetRecipeFolders(std::filesystem::path const& photo = {});

/// The user's own folder. Throws Failure (output) when there is neither $XDG_CONFIG_HOME nor $HOME.
std::filesystem::path GetUsersRecipeFolder();

/// A recipe's file.
struct RecipeFile {
    std::string name; ///< Without folder and ".json".
    std::filesystem::path path;
    std::string origin;
};

/// The recipes of the user and the shipped ones, by name; of two of one name the user's.
std::vector<RecipeFile> ListRecipes();

/// The file of a recipe: what is typed where it has a slash or ends with ".json", else NAME.json in the first of the
/// folders that has it. Throws Failure (wrong call) with the nearest names.
std::filesystem::path FindRecipe(std::string const& typed, std::filesystem::path const& photo = {});

/// Throws Failure (wrong call) for a name that a recipe cannot have: small letters, digits and hyphens, a letter first.
void RequireRecipeName(std::string const& name);

} // namespace Velnor::Tool
