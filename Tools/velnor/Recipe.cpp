#include "Tools/velnor/Recipe.h"

#include "Tools/velnor/EffectParameters.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/RecipeReader.h"
#include "Tools/velnor/Schema.h"
#include "Tools/velnor/Suggestions.h"
#include "Tools/velnor/TextFile.h"

#include <algorithm>

namespace Velnor::Tool {
namespace {

namespace fs = std::filesystem;

constexpr char const* VARIABLE_NAME = "^[a-z][a-z0-9-]*$";

std::vector<std::string> GetNames(std::vector<Recipe::Variable> const& variables) {
    std::vector<std::string> names;
    for (Recipe::Variable const& variable : variables) names.push_back(variable.name);
    return names;
}

std::string SuggestVariable(std::string const& typed, Recipe const& recipe) {
    if (recipe.variables.empty()) return "; it has none";
    return SuggestNearest(typed, GetNames(recipe.variables));
}

std::string GetValue(std::string const& name, Recipe const& recipe, std::vector<VariableValue> const& values) {
    auto const variable = std::ranges::find(recipe.variables, name, &Recipe::Variable::name);
    if (variable == recipe.variables.end())
        throw WrongCall("recipe " + recipe.name + ": there is no variable \"" + name + "\"" +
                        SuggestVariable(name, recipe));
    auto const given = std::ranges::find(values, name, &VariableValue::key);
    if (given != values.end()) return given->value;
    if (variable->defaultText) return *variable->defaultText;
    throw WrongCall("recipe " + recipe.name + ": the variable " + name + " has no value; --set " + name +
                    "=VALUE gives one");
}

/// The text with each {name} replaced.
std::string Fill(std::string const& text, Recipe const& recipe, std::vector<VariableValue> const& values) {
    std::string filled;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t const open = std::min(text.find('{', at), text.size());
        filled += text.substr(at, open - at);
        if (open == text.size()) break;
        std::size_t const close = text.find('}', open);
        if (close == std::string::npos)
            throw WrongCall("recipe " + recipe.name + ": \"" + text + "\" has a { without a }");
        filled += GetValue(text.substr(open + 1, close - open - 1), recipe, values);
        at = close + 1;
    }
    return filled;
}

} // namespace

VariableValue ParseVariableValue(std::string const& text) {
    std::size_t const equals = text.find('=');
    if (equals == std::string::npos || equals == 0)
        throw WrongCall("--set " + text + ": a variable is set as NAME=VALUE");
    return {text.substr(0, equals), text.substr(equals + 1)};
}

std::vector<EffectArgument> FillRecipe(Recipe const& recipe, std::vector<VariableValue> const& values) {
    std::vector<EffectArgument> filled;
    for (Recipe::Step const& step : recipe.steps) {
        EffectArgument argument{step.effect, step.implementation, {}};
        for (EffectArgument::Parameter const& parameter : step.parameters)
            argument.parameters.push_back({parameter.key, Fill(parameter.value, recipe, values)});
        filled.push_back(std::move(argument));
    }
    return filled;
}

void RequireEffect(EffectArgument const& argument, EffectCatalogue const& catalogue) {
    CatalogueEntry const& entry = catalogue.Get(argument.name);
    Proc::EffectKind const kind = GetImplementation(entry, argument.implementation).kind;
    Proc::SettingsType const& type = catalogue.GetSettingsType(entry);
    std::vector<Proc::SettingsField> const fields = DescribeParameters(type, kind);
    std::unique_ptr<Proc::Settings> const settings = type.create();
    bool hasInput = false;
    for (EffectArgument::Parameter const& parameter : argument.parameters) {
        bool const isInput = parameter.key == INPUT_PARAMETER;
        hasInput = hasInput || isInput;
        if (!isInput || std::ranges::count(fields, INPUT_PARAMETER, &Proc::SettingsField::name) == 0)
            SetParameter(*settings, argument.name, fields, parameter);
    }
    if (kind == Proc::EffectKind::TwoInput && !hasInput)
        throw WrongCall(argument.name + " works on two pictures; its parameter input names the second");
}

Json ToJson(Recipe const& recipe, EffectCatalogue const& catalogue) {
    Json document{{"version", Recipe::VERSION}, {"name", recipe.name}};
    if (!recipe.description.empty()) document["description"] = recipe.description;
    for (Recipe::Variable const& variable : recipe.variables) {
        Json& entry = document["variables"][variable.name] = Json::object();
        if (!variable.description.empty()) entry["description"] = variable.description;
        if (variable.defaultText) entry["default"] = *variable.defaultText;
    }
    document["effects"] = Json::array();
    for (Recipe::Step const& step : recipe.steps) {
        Json entry{{"effect", step.effect}};
        if (!step.implementation.empty()) entry["implementation"] = step.implementation;
        CatalogueEntry const& known = catalogue.Get(step.effect);
        auto const fields = DescribeParameters(catalogue.GetSettingsType(known), known.GetDefault().kind);
        for (EffectArgument::Parameter const& parameter : step.parameters) {
            auto const field = std::ranges::find(fields, parameter.key, &Proc::SettingsField::name);
            bool const isKnown = field != fields.end();
            Json const value = isKnown ? ToJson(*field, parameter.value) : Json(parameter.value);
            Json& place = entry["parameters"][parameter.key];
            if (place.is_null())
                place = value;
            else if (place.is_array())
                place.push_back(value);
            else
                place = Json::array({place, value});
        }
        document["effects"].push_back(entry);
    }
    return document;
}

Json MakeRecipeSchema(EffectCatalogue const& catalogue) {
    Json definitions = Json::object();
    definitions["variable"] = {{"type", "string"}, {"pattern", "\\{[a-z][a-z0-9-]*\\}"}};
    Json const step = MakeStepSchema(catalogue, catalogue.GetEntries(), Variables::Yes, definitions);
    Json const text{{"type", "string"}};
    Json const variable{
        {"type", "object"},
        {"properties", {{"description", text}, {"default", {{"type", Json::array({"string", "number", "boolean"})}}}}},
        {"additionalProperties", false}};
    return {
        {"$schema", SCHEMA_DIALECT},
        {"$id", "urn:velnor:recipe:" + std::to_string(Recipe::VERSION)},
        {"title", "A recipe of velnor: a chain of effects"},
        {"type", "object"},
        {"properties",
         {{"$schema", text},
          {"version", {{"const", Recipe::VERSION}}},
          {"name", {{"type", "string"}, {"pattern", VARIABLE_NAME}}},
          {"description", text},
          {"variables",
           {{"type", "object"}, {"propertyNames", {{"pattern", VARIABLE_NAME}}}, {"additionalProperties", variable}}},
          {"effects", {{"type", "array"}, {"minItems", 1}, {"items", step}}}}},
        {"required", Json::array({"version", "effects"})},
        {"additionalProperties", false},
        {"$defs", definitions}};
}

} // namespace Velnor::Tool
