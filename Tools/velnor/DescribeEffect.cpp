#include "Proc/Settings/SettingsGuide.h"
#include "Tools/velnor/EffectCatalogue.h"
#include "Tools/velnor/EffectExample.h"
#include "Tools/velnor/EffectMemory.h"
#include "Tools/velnor/EffectParameters.h"
#include "Tools/velnor/Json.h"
#include "Tools/velnor/ListCommands.h"
#include "Tools/velnor/Suggestions.h"
#include "Tools/velnor/TextWrap.h"

#include <algorithm>

namespace Velnor::Tool {
namespace {

using Fields = std::vector<Proc::SettingsField>;

std::string FormatField(Proc::SettingsField const& field, std::size_t width) {
    std::string facts = field.type;
    if (field.range) facts += ", " + GetRangeText(field);
    if (!field.unit.empty()) facts += (field.range ? " " : ", ") + field.unit;
    if (std::string const accepted = field.GetAcceptedText(); !accepted.empty())
        facts += " (the effect accepts " + accepted + ")";
    if (!field.isOutput) {
        if (!field.defaultText.empty()) facts += ", default " + field.defaultText;
        if (!field.example.empty()) facts += ", example " + field.example;
    }
    std::size_t const column = width + 4;
    std::string text = FormatEntry(field.name, facts, 2, column);
    auto const add = [&](std::string const& more) {
        text += std::string(column, ' ') + WrapParagraph(more, column, column) + "\n";
    };
    add(field.help);
    if (!field.choices.empty() && field.type != "switch") add("one of " + JoinAlternatives(field.choices, "and"));
    return text;
}

std::string FormatSection(std::string const& title, Fields const& fields, bool ofResults) {
    std::size_t width = 0;
    for (Proc::SettingsField const& field : fields) width = std::max(width, field.name.size());
    std::string text;
    for (Proc::SettingsField const& field : fields)
        if (field.isOutput == ofResults) text += FormatField(field, width);
    return text.empty() ? text : "\n" + title + "\n" + text;
}

std::string FormatAsText(CatalogueEntry const& entry, Proc::SettingsType const& type, Fields const& fields) {
    std::vector<std::string> implementations;
    for (Proc::RegisteredEffect const& effect : entry.implementations)
        implementations.push_back(ToLower(effect.implName) + " (" + effect.origin + ")");
    return WrapParagraph(entry.name + ": " + type.summary, 0) + "\n" +
           WrapParagraph("Works on " + GetKindText(entry.GetDefault().kind, type) + ". Class " + entry.classId +
                             ", implemented by " + JoinAlternatives(implementations, "and") + ". Holds about " +
                             std::to_string(GetEffectMemory(entry.name, entry.GetDefault().implName)) +
                             " bytes of memory for each pixel.",
                         0) +
           "\n" + FormatSection("Parameters", fields, false) + FormatSection("Results", fields, true) +
           "\nExample\n  " + MakeExample(entry, type, fields) + "\n";
}

Json DescribeField(Proc::SettingsField const& field) {
    Json entry{{"name", field.name}, {"type", field.type}, {"help", field.help}, {"unit", field.unit}};
    entry["range"] = field.range ? Json{{"low", field.range->low}, {"high", field.range->high}} : Json();
    entry["accepted"] = field.GetAcceptedText();
    entry["choices"] = field.choices;
    entry["default"] = ToJson(field, field.defaultText);
    entry["example"] = ToJson(field, field.example);
    entry["output"] = field.isOutput;
    return entry;
}

std::string FormatAsJson(CatalogueEntry const& entry, Proc::SettingsType const& type, Fields const& fields) {
    Json document{{"name", entry.name}, {"class", entry.classId}, {"summary", type.summary}};
    document["family"] = Proc::FindGuide(entry.classId).family;
    document["implementations"] = Json::array();
    for (Proc::RegisteredEffect const& effect : entry.implementations)
        document["implementations"].push_back(effect.implName);
    document["memory"] = GetEffectMemory(entry.name, entry.GetDefault().implName); // Bytes a pixel.
    document["parameters"] = Json::array();
    for (Proc::SettingsField const& field : fields) document["parameters"].push_back(DescribeField(field));
    document["example"] = MakeExample(entry, type, fields);
    document["example-effect"] = MakeExampleEffect(entry, fields);
    return Write(document);
}

} // namespace

std::string DescribeEffect(std::string const& effect, std::vector<std::string> const& plugins, bool asJson) {
    EffectCatalogue const catalogue(plugins);
    CatalogueEntry const& entry = catalogue.Get(effect);
    Proc::SettingsType const& type = catalogue.GetSettingsType(entry);
    Fields const fields = DescribeParameters(type, entry.GetDefault().kind);
    return asJson ? FormatAsJson(entry, type, fields) : FormatAsText(entry, type, fields);
}

} // namespace Velnor::Tool
