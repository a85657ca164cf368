#include "Tools/velnor/EffectCompletion.h"

#include "Tools/velnor/EffectCatalogue.h"
#include "Tools/velnor/EffectParameters.h"
#include "Tools/velnor/Suggestions.h"

#include <algorithm>

namespace Velnor::Tool {
namespace {

using Candidates = std::vector<Candidate>;

void Add(Candidates& candidates, std::string const& begun, std::string text, std::string help = {}) {
    if (text.starts_with(begun)) candidates.push_back({std::move(text), std::move(help)});
}

Candidates CompleteName(std::string const& begun, EffectCatalogue const& catalogue) {
    Candidates candidates;
    for (CatalogueEntry const& entry : catalogue.GetEntries()) {
        std::string const& summary = catalogue.GetSettingsType(entry).summary;
        Add(candidates, begun, entry.name, summary);
        if (begun == entry.name) Add(candidates, begun, entry.name + ":", "with parameters");
        for (Proc::RegisteredEffect const& effect : entry.implementations)
            if (begun.find('/') != std::string::npos)
                Add(candidates, begun, entry.name + "/" + ToLower(effect.implName), summary);
    }
    return candidates;
}

/// "number, 0 to 100 %"
std::string DescribeShortly(Proc::SettingsField const& field) {
    std::string const range = GetRangeText(field);
    return field.type + (range.empty() ? "" : ", " + range) + (field.unit.empty() ? "" : " " + field.unit) + ": " +
           field.help;
}

Candidates CompleteValue(Proc::SettingsField const& field, std::string const& before, std::string const& begun) {
    Candidates candidates;
    if (field.type == "file") {
        candidates = CompleteFile(begun);
        for (Candidate& file : candidates) file.text.insert(0, before);
        return candidates;
    }
    for (std::string const& choice : field.choices) Add(candidates, before + begun, before + choice);
    if (!field.choices.empty()) return candidates;
    Add(candidates, before + begun, before + field.defaultText, "default");
    if (field.example != field.defaultText) Add(candidates, before + begun, before + field.example, "for example");
    std::erase_if(candidates, [&](Candidate const& one) { return one.text == before; });
    return candidates;
}

} // namespace

Candidates CompleteEffect(std::string const& begun, std::vector<std::string> const& plugins) {
    EffectCatalogue const catalogue(plugins);
    std::size_t const colon = begun.find(':');
    if (colon == std::string::npos) return CompleteName(begun, catalogue);
    std::string const name = begun.substr(0, begun.find_first_of("/:"));
    auto const& entries = catalogue.GetEntries();
    auto const entry = std::ranges::find(entries, name, &CatalogueEntry::name);
    if (entry == entries.end()) return {};
    std::size_t const start = begun.find_last_of(":,") + 1;
    std::size_t const equals = begun.find('=', start);
    Candidates candidates;
    for (Proc::SettingsField const& field :
         DescribeParameters(catalogue.GetSettingsType(*entry), entry->GetDefault().kind)) {
        if (field.isOutput) continue;
        if (equals == std::string::npos)
            Add(candidates, begun, begun.substr(0, start) + field.name + "=", DescribeShortly(field));
        else if (begun.substr(start, equals - start) == field.name)
            return CompleteValue(field, begun.substr(0, equals + 1), begun.substr(equals + 1));
    }
    return candidates;
}

} // namespace Velnor::Tool
