#include "Proc/Settings/SettingsGuide.h"
#include "Tools/velnor/EffectCatalogue.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/Json.h"
#include "Tools/velnor/ListCommands.h"
#include "Tools/velnor/Suggestions.h"
#include "Tools/velnor/Synonyms.h"
#include "Tools/velnor/TextWrap.h"

#include <algorithm>

namespace Velnor::Tool {
namespace {

std::string GetKindWord(Proc::EffectKind kind) {
    switch (kind) {
    case Proc::EffectKind::TwoInput:
        return "two-input";
    case Proc::EffectKind::VarInput:
        return "var-input";
    default:
        return "one-input";
    }
}

/// An effect that cannot be made is listed with the reason.
std::string GetSummary(EffectCatalogue const& catalogue, CatalogueEntry const& entry) {
    try {
        return catalogue.GetSettingsType(entry).summary;
    } catch (...) {
        return ReportCurrentException().text;
    }
}

/// One effect of the list, with all that a search looks at.
struct Listed {
    CatalogueEntry const* entry;
    std::string summary;
    std::string_view family;
};

std::string JoinWords(CatalogueEntry const& entry) {
    std::string words;
    for (Synonym const& synonym : GetSynonyms())
        if (synonym.effect.substr(0, synonym.effect.find(':')) == entry.name) words.append(synonym.words).append(" ");
    return words;
}

bool Matches(Listed const& listed, std::vector<std::string> const& wanted) {
    std::string const text = ToLower(listed.entry->name + "\n" + listed.summary + "\n" + std::string(listed.family) +
                                     "\n" + JoinWords(*listed.entry));
    return std::ranges::all_of(wanted, [&](std::string const& word) { return text.find(ToLower(word)) != text.npos; });
}

/// By family, in the order of the guides, then by name.
std::vector<Listed> ListMatching(EffectCatalogue const& catalogue, std::vector<std::string> const& wanted) {
    std::vector<std::string_view> families;
    for (Proc::SettingsGuide const& guide : Proc::GetGuides())
        if (families.empty() || families.back() != guide.family) families.push_back(guide.family);
    std::vector<Listed> list;
    for (CatalogueEntry const& entry : catalogue.GetEntries()) {
        Listed const one{&entry, GetSummary(catalogue, entry), Proc::FindGuide(entry.classId).family};
        if (Matches(one, wanted)) list.push_back(one);
    }
    std::ranges::stable_sort(list, {}, [&](Listed const& one) { return std::ranges::find(families, one.family); });
    return list;
}

/// Where an effect comes from that was not installed with the host.
std::string NameOrigin(CatalogueEntry const& entry) {
    std::string const& origin = entry.GetDefault().origin;
    return origin.find('/') == origin.npos ? std::string() : " From " + origin + ".";
}

std::string NameImplementations(CatalogueEntry const& entry) {
    if (entry.implementations.size() < 2) return {};
    std::vector<std::string> names;
    for (Proc::RegisteredEffect const& effect : entry.implementations) names.push_back(ToLower(effect.implName));
    return " Implementations: " + JoinAlternatives(names, "and") + ".";
}

std::string FormatAsText(std::vector<Listed> const& effects) {
    std::size_t width = 0;
    for (Listed const& one : effects) width = std::max(width, one.entry->name.size());
    std::string text;
    std::string_view family;
    for (Listed const& one : effects) {
        if (one.family != family) text.append(text.empty() ? "" : "\n").append(one.family).append("\n");
        family = one.family;
        text += FormatEntry(one.entry->name, one.summary + NameImplementations(*one.entry) + NameOrigin(*one.entry), 2,
                            width + 4);
    }
    return text;
}

std::string FormatAsJson(std::vector<Listed> const& effects) {
    Json document = Json::array();
    for (Listed const& one : effects)
        for (Proc::RegisteredEffect const& effect : one.entry->implementations)
            document.push_back({{"name", one.entry->name},
                                {"class", one.entry->classId},
                                {"family", one.family},
                                {"implementation", effect.implName},
                                {"default", &effect == &one.entry->GetDefault()},
                                {"kind", GetKindWord(effect.kind)},
                                {"from", effect.origin},
                                {"summary", one.summary}});
    return Write(document);
}

} // namespace

std::string ListEffects(std::vector<std::string> const& plugins, std::vector<std::string> const& wanted, bool asJson) {
    EffectCatalogue const catalogue(plugins);
    std::vector<Listed> const effects = ListMatching(catalogue, wanted);
    if (effects.empty())
        throw WrongCall("effects: nothing is known of " + JoinAlternatives(wanted, "and") +
                        "; `velnor effects` lists all");
    return asJson ? FormatAsJson(effects) : FormatAsText(effects);
}

} // namespace Velnor::Tool
