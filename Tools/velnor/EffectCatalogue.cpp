#include "Tools/velnor/EffectCatalogue.h"

#include "Proc/Host/PluginLoader.h"
#include "Proc/Host/Registry.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tools/velnor/Console.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/Suggestions.h"
#include "Tools/velnor/Synonyms.h"

#include <algorithm>

namespace Velnor::Tool {
namespace {

std::string GetEffectName(std::string const& classId) {
    Proc::SettingsType type;
    type.classId = classId;
    return type.GetEffectName();
}

void LoadPlugins(Proc::Host& host, std::vector<std::string> const& plugins) {
    for (std::filesystem::path const& file : Proc::FindInstalledPlugins()) {
        try {
            host.LoadPlugin(file);
        } catch (Proc::ProcException const&) {
            PrintError(ReportCurrentException().text);
        }
    }
    for (std::string const& problem : host.LoadUserPlugins()) PrintError(problem);
    for (std::string const& file : plugins) {
        try {
            if (!host.HasPlugin(file)) host.LoadPlugin(file);
        } catch (Proc::ProcException const&) {
            throw WrongCall(ReportCurrentException().text);
        }
    }
}

} // namespace

Proc::RegisteredEffect const& CatalogueEntry::GetDefault() const { return *Proc::FindDefault(implementations); }

EffectCatalogue::EffectCatalogue(std::vector<std::string> const& plugins, Proc::MemoryLimits const& pictures)
    : host(std::make_unique<Proc::StandardHost>(pictures)) {
    LoadPlugins(*host, plugins);
    for (Proc::RegisteredEffect const& effect : host->GetEffects()) {
        auto const known = std::ranges::find(entries, effect.classId, &CatalogueEntry::classId);
        if (known == entries.end())
            entries.push_back({GetEffectName(effect.classId), effect.classId, {effect}});
        else
            known->implementations.push_back(effect);
    }
    std::ranges::stable_sort(entries, {}, &CatalogueEntry::name);
}

CatalogueEntry const& EffectCatalogue::Get(std::string const& name) const {
    auto const found = std::ranges::find(entries, name, &CatalogueEntry::name);
    if (found != entries.end()) return *found;
    if (Synonym const* const synonym = FindSynonym(name)) {
        std::string const effect(synonym->effect);
        throw WrongCall("there is no effect \"" + name + "\"; " +
                        (synonym->isNear ? "near is " + effect : effect + " does that"));
    }
    std::vector<std::string> names;
    for (CatalogueEntry const& entry : entries) names.push_back(entry.name);
    throw WrongCall("there is no effect \"" + name + "\"" +
                    SuggestNearest(name, names, "`velnor effects` lists what there is"));
}

Proc::SettingsType const& EffectCatalogue::GetSettingsType(CatalogueEntry const& entry) const {
    if (Proc::SettingsType const* type = Proc::SettingsType::Find(entry.classId)) return *type;
    auto const effect = host->GetFactory()->CreateEffect(entry.classId, entry.GetDefault().implName);
    if (!effect) throw WrongCall(entry.name + " cannot be made: its plug-in gives no effect");
    return effect->GetSettingsBase().GetType();
}

Proc::RegisteredEffect const& GetImplementation(CatalogueEntry const& entry, std::string const& typed) {
    if (typed.empty()) return entry.GetDefault();
    std::vector<std::string> names;
    for (Proc::RegisteredEffect const& effect : entry.implementations) {
        if (ToLower(effect.implName) == ToLower(typed)) return effect;
        names.push_back(ToLower(effect.implName));
    }
    throw WrongCall(entry.name + " has no implementation \"" + typed + "\"; there is " +
                    JoinAlternatives(names, "and"));
}

std::string GetKindText(Proc::EffectKind kind, Proc::SettingsType const& type) {
    std::size_t const most = type.pictures.size();
    switch (kind) {
    case Proc::EffectKind::TwoInput:
        return "two pictures";
    case Proc::EffectKind::VarInput:
        if (most == 0) return "any number of pictures, which it joins";
        return most == 1 ? "one picture, of which it makes several" : "one to " + std::to_string(most) + " pictures";
    default:
        return "one picture";
    }
}

} // namespace Velnor::Tool
