#include "Proc/Host/Factory.h"

#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Interfaces/ProcException.h"

#include <algorithm>
#include <optional>
#include <ranges>
#include <utility>

namespace Velnor::Proc {
namespace {

using Registrations = std::vector<Registration>;

/// The implementation of that name and kind; null where there is none.
Registration const* Choose(Registrations const& ofClass, std::string const& implName, std::optional<EffectKind> kind) {
    auto ofKind =
        ofClass | std::views::filter([&](Registration const& entry) { return !kind || entry.effect.kind == *kind; });
    auto const nameOf = [](Registration const& entry) { return entry.effect.implName; };
    auto const found = implName == ImplNames::DEFAULT ? FindDefault(ofKind, &Registration::effect)
                                                      : std::ranges::find(ofKind, implName, nameOf);
    return found == ofKind.end() ? nullptr : &*found;
}

std::string ListImplementations(Registrations const& ofClass) {
    std::string list;
    for (Registration const& entry : ofClass)
        list += (list.empty() ? "" : ", ") + entry.effect.implName + " (" + GetKindName(entry.effect.kind) + ")";
    return list;
}

Registration const& ChooseOrThrow(Registrations const& ofClass, std::string const& classId, std::string const& implName,
                                  std::optional<EffectKind> kind = std::nullopt) {
    if (ofClass.empty())
        VELNOR_THROW(ProcException, "No effect \"" + classId + "\" is registered; is the plug-in that has it loaded?");
    if (Registration const* const found = Choose(ofClass, implName, kind)) return *found;
    Registration const* const otherKind = Choose(ofClass, implName, std::nullopt);
    std::string const problem = otherKind == nullptr ? "has no implementation \"" + implName + "\""
                                                     : "is a " + std::string(GetKindName(otherKind->effect.kind)) +
                                                           " effect as implementation \"" + implName + "\", not a " +
                                                           GetKindName(*kind) + " one";
    VELNOR_THROW(ProcException,
                 "Effect \"" + classId + "\" " + problem + "; registered: " + ListImplementations(ofClass) + ".");
}

} // namespace

Factory::Factory(std::shared_ptr<Registry const> effectRegistry, ContextHandle effectContext)
    : registry(std::move(effectRegistry)), context(std::move(effectContext)) {}

bool Factory::Has(std::string const& classId, std::string const& implName) const {
    return Choose(registry->GetAllOf(classId), implName, std::nullopt) != nullptr;
}

bool Factory::HasOneInputEffect(std::string const& classId, std::string const& implName) const {
    return Choose(registry->GetAllOf(classId), implName, EffectKind::OneInput) != nullptr;
}

bool Factory::HasTwoInputEffect(std::string const& classId, std::string const& implName) const {
    return Choose(registry->GetAllOf(classId), implName, EffectKind::TwoInput) != nullptr;
}

bool Factory::HasVarInputEffect(std::string const& classId, std::string const& implName) const {
    return Choose(registry->GetAllOf(classId), implName, EffectKind::VarInput) != nullptr;
}

EffectKind Factory::GetKind(std::string const& classId, std::string const& implName) const {
    return ChooseOrThrow(registry->GetAllOf(classId), classId, implName).effect.kind;
}

std::vector<std::string> Factory::GetClassIds() const {
    std::vector<std::string> classIds;
    for (Registration const& entry : registry->GetAll())
        if (std::ranges::find(classIds, entry.effect.classId) == classIds.end())
            classIds.push_back(entry.effect.classId);
    return classIds;
}

std::vector<std::string> Factory::GetImplNames(std::string const& classId) const {
    std::vector<std::string> names;
    for (Registration const& entry : registry->GetAllOf(classId)) names.push_back(entry.effect.implName);
    return names;
}

intrusive_ptr<IEffect> Factory::Create(Registration const& registration) {
    // No lock is held: effects create their sub-effects here.
    intrusive_ptr<IEffect> effect = registration.factory(FactoryHandle(this), context);
    if (!effect)
        VELNOR_THROW(ProcException, "The factory function of effect \"" + registration.effect.classId +
                                        "\", implementation \"" + registration.effect.implName + "\" of " +
                                        registration.effect.origin + ", returned null.");
    return effect;
}

template <class Effect>
intrusive_ptr<Effect> Factory::CreateOfKind(std::string const& classId, std::string const& implName, EffectKind kind) {
    Registrations const ofClass = registry->GetAllOf(classId);
    Registration const& chosen = ChooseOrThrow(ofClass, classId, implName, kind);
    intrusive_ptr<IEffect> const effect = Create(chosen);
    intrusive_ptr<Effect> typed(dynamic_cast<Effect*>(effect.get()));
    if (!typed)
        VELNOR_THROW(ProcException, "The factory function of effect \"" + classId + "\", implementation \"" +
                                        chosen.effect.implName + "\" of " + chosen.effect.origin +
                                        ", is registered as " + GetKindName(kind) + " and made another kind.");
    return typed;
}

intrusive_ptr<IEffect> Factory::CreateEffect(std::string const& classId, std::string const& implName) {
    Registrations const ofClass = registry->GetAllOf(classId);
    return Create(ChooseOrThrow(ofClass, classId, implName));
}

void Factory::CreateOneInputEffect(intrusive_ptr<IOneInputEffectVideo>* result, std::string const& classId,
                                   std::string const& implName) {
    *result = CreateOfKind<IOneInputEffectVideo>(classId, implName, EffectKind::OneInput);
}

void Factory::CreateTwoInputEffect(intrusive_ptr<ITwoInputEffectVideo>* result, std::string const& classId,
                                   std::string const& implName) {
    *result = CreateOfKind<ITwoInputEffectVideo>(classId, implName, EffectKind::TwoInput);
}

void Factory::CreateVarInputEffect(intrusive_ptr<IVarInputEffectVideo>* result, std::string const& classId,
                                   std::string const& implName) {
    *result = CreateOfKind<IVarInputEffectVideo>(classId, implName, EffectKind::VarInput);
}

} // namespace Velnor::Proc
