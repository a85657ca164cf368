#include "Tools/velnor/RecipeStore.h"

#include "Tools/velnor/Failure.h"
#include "Tools/velnor/Suggestions.h"

#include <algorithm>
#include <cstdlib>
#include <system_error>

namespace Velnor::Tool {
namespace {

namespace fs = std::filesystem;

constexpr char const* EXTENSION = ".json";

/// Of the installed tree as of the built one: share/velnor/recipes beside the folder of the program.
fs::path GetShippedFolder() {
    std::error_code error;
    fs::path const program = fs::read_symlink("/proc/self/exe", error);
    return program.parent_path().parent_path() / "share/velnor/recipes";
}

fs::path FindUsersFolder() {
    for (auto const& [variable, below] : {std::pair{"XDG_CONFIG_HOME", ""}, std::pair{"HOME", ".config"}})
        if (char const* const folder = std::getenv(variable); folder != nullptr && *folder == '/')
            return fs::path(folder) / below / "velnor/recipes";
    return {};
}

void AddRecipes(RecipeFolder const& folder, std::vector<RecipeFile>& recipes) {
    std::error_code error;
    for (fs::directory_iterator file(folder.path, error), end; !error && file != end; file.increment(error)) {
        fs::path const& path = file->path();
        std::string const name = path.stem().string();
        bool const isKnown = std::ranges::count(recipes, name, &RecipeFile::name) > 0;
        if (path.extension() == EXTENSION && !isKnown) recipes.push_back({name, path, folder.origin});
    }
}

} // namespace

std::vector<RecipeFolder> GetRecipeFolders(fs::path const& photo) {
    std::vector<RecipeFolder> folders;
    if (photo.has_parent_path()) folders.push_back({photo.parent_path(), "beside the photographs"});
    folders.push_back({".", "here"});
    if (fs::path const users = FindUsersFolder(); !users.empty()) folders.push_back({users, "yours"});
    folders.push_back({GetShippedFolder(), "shipped"});
    return folders;
}

fs::path GetUsersRecipeFolder() {
    if (fs::path const users = FindUsersFolder(); !users.empty()) return users;
    throw Failure(ExitCode::OutputFailed, "recipe: there is no folder for recipes, since neither XDG_CONFIG_HOME nor "
                                          "HOME is set");
}

std::vector<RecipeFile> ListRecipes() {
    std::vector<RecipeFile> recipes;
    for (RecipeFolder const& folder : GetRecipeFolders())
        if (folder.origin != "here") AddRecipes(folder, recipes); // Any JSON file may lie there.
    std::ranges::sort(recipes, {}, &RecipeFile::name);
    return recipes;
}

fs::path FindRecipe(std::string const& typed, fs::path const& photo) {
    if (typed.find('/') != std::string::npos || typed.ends_with(EXTENSION)) return typed;
    std::error_code ignored;
    for (RecipeFolder const& folder : GetRecipeFolders(photo))
        if (fs::path const file = folder.path / (typed + EXTENSION); fs::is_regular_file(file, ignored)) return file;
    std::vector<std::string> names;
    for (RecipeFile const& recipe : ListRecipes()) names.push_back(recipe.name);
    throw WrongCall("there is no recipe \"" + typed + "\"" +
                    SuggestNearest(typed, names, "`velnor recipe list` shows those that there are"));
}

void RequireRecipeName(std::string const& name) {
    auto const isLetter = [](char c) { return c >= 'a' && c <= 'z'; };
    bool const isGood = !name.empty() && isLetter(name.front()) && std::ranges::all_of(name, [&](char c) {
        return isLetter(c) || (c >= '0' && c <= '9') || c == '-';
    });
    if (!isGood)
        throw WrongCall("recipe: \"" + name +
                        "\" is no name for one: small letters, digits and hyphens are accepted, "
                        "a letter first");
}

} // namespace Velnor::Tool
