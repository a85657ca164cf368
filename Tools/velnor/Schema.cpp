#include "Tools/velnor/Schema.h"

#include "Tools/velnor/EffectParameters.h"
#include "Tools/velnor/ListCommands.h"
#include "Tools/velnor/Suggestions.h"

#include <algorithm>

namespace Velnor::Tool {
namespace {

Json DescribeNumber(Proc::SettingsField const& field) {
    Json schema{{"type", field.type}};
    if (field.range) schema["minimum"] = field.range->low;
    if (field.range) schema["maximum"] = field.range->high;
    return schema;
}

/// What a text of the type looks like, as far as a pattern can say it; the effects check the rest.
Json DescribeText(Proc::SettingsField const& field) {
    Json schema{{"type", "string"}};
    if (field.type == "colour") schema["pattern"] = "^(#[0-9a-fA-F]{3,8}|[a-zA-Z]+(\\(.*\\))?)$";
    if (field.type == "size") schema["pattern"] = "^[0-9]+x[0-9]+(x[0-9]+:[0-9]+)?$";
    if (field.type == "margins") schema["pattern"] = "^[0-9]+(,[0-9]+){3}$";
    return schema;
}

Json DescribeValue(Proc::SettingsField const& field) {
    if (field.type == "number" || field.type == "integer") return DescribeNumber(field);
    if (field.type == "switch") return {{"type", "boolean"}};
    if (field.type == "choice") return {{"enum", field.choices}};
    Json const text = DescribeText(field);
    if (field.name != INPUT_PARAMETER) return text;
    return {{"anyOf", Json::array({text, {{"type", "array"}, {"items", text}}})}};
}

Json DescribeProperty(Proc::SettingsField const& field, Variables variables) {
    Json value = DescribeValue(field);
    if (variables == Variables::Yes) value = {{"anyOf", Json::array({value, {{"$ref", "#/$defs/variable"}}})}};
    value["description"] = field.help;
    if (!field.unit.empty()) value["unit"] = field.unit;
    if (!field.defaultText.empty()) value["default"] = ToJson(field, field.defaultText);
    return value;
}

Json DescribeParameterObject(Proc::SettingsType const& type, Proc::EffectKind kind, Variables variables) {
    Json properties = Json::object();
    Json required = Json::array();
    for (Proc::SettingsField const& field : DescribeParameters(type, kind)) {
        if (field.isOutput) continue;
        properties[field.name] = DescribeProperty(field, variables);
        if (field.name == INPUT_PARAMETER && kind == Proc::EffectKind::TwoInput) required.push_back(field.name);
    }
    return {{"type", "object"},
            {"description", type.summary},
            {"properties", properties},
            {"required", required},
            {"additionalProperties", false}};
}

/// What holds when a step is of this effect.
Json DescribeCase(CatalogueEntry const& entry, bool needsParameters) {
    Json implementations = Json::array();
    for (Proc::RegisteredEffect const& effect : entry.implementations)
        implementations.push_back(ToLower(effect.implName));
    Json then{{"properties",
               {{"implementation", {{"enum", implementations}}}, {"parameters", {{"$ref", "#/$defs/" + entry.name}}}}}};
    if (needsParameters) then["required"] = Json::array({"parameters"});
    return {{"if", {{"properties", {{"effect", {{"const", entry.name}}}}}}}, {"then", then}};
}

} // namespace

Json MakeStepSchema(EffectCatalogue const& catalogue, std::vector<CatalogueEntry> const& entries, Variables variables,
                    Json& definitions) {
    Json names = Json::array();
    Json cases = Json::array();
    for (CatalogueEntry const& entry : entries) {
        Json const parameters =
            DescribeParameterObject(catalogue.GetSettingsType(entry), entry.GetDefault().kind, variables);
        names.push_back(entry.name);
        cases.push_back(DescribeCase(entry, !parameters["required"].empty()));
        definitions[entry.name] = parameters;
    }
    return {{"type", "object"},
            {"properties",
             {{"effect", {{"enum", names}, {"description", "the effect's name"}}},
              {"implementation", {{"type", "string"}, {"description", "which of several; else the default one"}}},
              {"parameters", {{"type", "object"}}}}},
            {"required", Json::array({"effect"})},
            {"additionalProperties", false},
            {"allOf", cases}};
}

std::string FormatSchema(std::string const& effect, std::vector<std::string> const& plugins) {
    EffectCatalogue const catalogue(plugins);
    std::vector<CatalogueEntry> const entries =
        effect.empty() ? catalogue.GetEntries() : std::vector{catalogue.Get(effect)};
    Json definitions = Json::object();
    Json const step = MakeStepSchema(catalogue, entries, Variables::No, definitions);
    Json document{{"$schema", SCHEMA_DIALECT},
                  {"$id", "urn:velnor:effects:" VELNOR_VERSION + (effect.empty() ? "" : ":" + effect)},
                  {"title", "A step of velnor: an effect and its parameters"}};
    document.update(step);
    document["$defs"] = definitions;
    return Write(document);
}

} // namespace Velnor::Tool
