#include "Tools/velnor/RecipeReader.h"

#include "Tools/velnor/Failure.h"
#include "Tools/velnor/Suggestions.h"
#include "Tools/velnor/TextFile.h"

#include <algorithm>

namespace Velnor::Tool {
namespace {

namespace fs = std::filesystem;

/// Reads the members of one recipe; every message names the file and the place in it.
class Reader {
public:
    explicit Reader(fs::path const& path) : file(path) {}

    Recipe Read(Json const& document) const {
        RequireMembers(document, "the recipe", {"$schema", "version", "name", "description", "variables", "effects"});
        RequireVersion(document);
        Recipe recipe;
        recipe.name = document.contains("name") ? ReadText(document["name"], "name") : file.stem().string();
        if (document.contains("description")) recipe.description = ReadText(document["description"], "description");
        if (document.contains("variables")) ReadVariables(document["variables"], recipe);
        if (!document.contains("effects")) throw Refuse("effects is missing; it is the list of effects");
        if (!document["effects"].is_array() || document["effects"].empty())
            throw Refuse("effects is no list with one effect or more");
        for (Json const& step : document["effects"]) recipe.steps.push_back(ReadStep(step, recipe.steps.size() + 1));
        return recipe;
    }

private:
    Failure Refuse(std::string const& what) const { return {ExitCode::InputFailed, file.string() + ": " + what}; }

    void RequireMembers(Json const& object, std::string const& place, std::vector<std::string> const& known) const {
        if (!object.is_object()) throw Refuse(place + " is no object");
        for (auto const& member : object.items())
            if (std::ranges::count(known, member.key()) == 0)
                throw Refuse(place + " has no member \"" + member.key() + "\"" + SuggestNearest(member.key(), known));
    }

    void RequireVersion(Json const& document) const {
        if (!document.contains("version"))
            throw Refuse("version is missing; that of today is " + std::to_string(Recipe::VERSION));
        Json const& version = document["version"];
        if (!version.is_number_integer() || version < 1) throw Refuse("version " + version.dump() + " is none");
        if (version > Recipe::VERSION)
            throw Refuse("it is of version " + version.dump() + "; this velnor knows version " +
                         std::to_string(Recipe::VERSION));
    }

    std::string ReadText(Json const& value, std::string const& place) const {
        if (!value.is_string()) throw Refuse(place + " is no text");
        return value.get<std::string>();
    }

    /// A text, a number or a switch, as it would be typed.
    std::string ReadValue(Json const& value, std::string const& place) const {
        if (value.is_string()) return value.get<std::string>();
        if (value.is_number() || value.is_boolean()) return value.dump();
        throw Refuse(place + " is no text, number or switch");
    }

    void ReadVariables(Json const& variables, Recipe& recipe) const {
        if (!variables.is_object()) throw Refuse("variables is no object");
        for (auto const& [name, entry] : variables.items()) {
            std::string const place = "the variable " + name;
            RequireMembers(entry, place, {"description", "default"});
            Recipe::Variable variable{name, {}, {}};
            if (entry.contains("description")) variable.description = ReadText(entry["description"], place);
            if (entry.contains("default")) variable.defaultText = ReadValue(entry["default"], place);
            recipe.variables.push_back(std::move(variable));
        }
    }

    Recipe::Step ReadStep(Json const& step, std::size_t number) const {
        std::string const place = "effect " + std::to_string(number);
        RequireMembers(step, place, {"effect", "implementation", "parameters"});
        if (!step.contains("effect")) throw Refuse(place + ": effect is missing; it is the effect's name");
        Recipe::Step read;
        read.effect = ReadText(step["effect"], place + ": effect");
        if (step.contains("implementation"))
            read.implementation = ReadText(step["implementation"], place + ": implementation");
        if (!step.contains("parameters")) return read;
        if (!step["parameters"].is_object()) throw Refuse(place + ": parameters is no object");
        for (auto const& [key, value] : step["parameters"].items())
            ReadParameter(key, value, place + ": " + key, read.parameters);
        return read;
    }

    void ReadParameter(std::string const& key, Json const& value, std::string const& place,
                       std::vector<EffectArgument::Parameter>& parameters) const {
        if (key == INPUT_PARAMETER && value.is_array()) {
            for (Json const& one : value) ReadParameter(key, one, place, parameters);
            return;
        }
        std::string text = ReadValue(value, place);
        if (key == INPUT_PARAMETER && !text.starts_with('{')) text = (file.parent_path() / text).string();
        parameters.push_back({key, std::move(text)});
    }

    fs::path const& file;
};

} // namespace

Recipe ReadRecipeDocument(Json const& document, fs::path const& place) { return Reader(place).Read(document); }

Recipe ReadRecipe(fs::path const& file) {
    try {
        return ReadRecipeDocument(Json::parse(ReadTextFile(file)), file);
    } catch (Json::parse_error const& error) {
        std::string const text = error.what();
        throw Failure(ExitCode::InputFailed,
                      file.string() + " is no JSON: " + text.substr(std::min(text.find("] ") + 2, text.size())));
    }
}

} // namespace Velnor::Tool
