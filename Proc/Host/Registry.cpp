#include "Proc/Host/Registry.h"

#include "Proc/Interfaces/ProcException.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace Velnor::Proc {
namespace {

Registration const* FindPair(std::vector<Registration> const& registrations, std::string const& classId,
                             std::string const& implName) {
    auto const found = std::ranges::find_if(registrations, [&](Registration const& registration) {
        return registration.effect.classId == classId && registration.effect.implName == implName;
    });
    return found == registrations.end() ? nullptr : &*found;
}

} // namespace

char const* GetKindName(EffectKind kind) {
    switch (kind) {
    case EffectKind::OneInput:
        return "one-input";
    case EffectKind::TwoInput:
        return "two-input";
    case EffectKind::VarInput:
        return "var-input";
    }
    return "unknown";
}

Registry::Registry(std::string effectOrigin, Registry const* below) : origin(std::move(effectOrigin)), base(below) {}

EffectFactoryFunction Registry::FindOneInputEffect(std::string const& classId, std::string const& implName) const {
    return Find(classId, implName, EffectKind::OneInput);
}

EffectFactoryFunction Registry::FindTwoInputEffect(std::string const& classId, std::string const& implName) const {
    return Find(classId, implName, EffectKind::TwoInput);
}

EffectFactoryFunction Registry::FindVarInputEffect(std::string const& classId, std::string const& implName) const {
    return Find(classId, implName, EffectKind::VarInput);
}

void Registry::RegisterOneInputEffect(std::string const& classId, std::string const& implName,
                                      EffectFactoryFunction factory, void* /*reserved*/) {
    Register({{classId, implName, EffectKind::OneInput, origin}, factory});
}

void Registry::RegisterTwoInputEffect(std::string const& classId, std::string const& implName,
                                      EffectFactoryFunction factory, void* /*reserved*/) {
    Register({{classId, implName, EffectKind::TwoInput, origin}, factory});
}

void Registry::RegisterVarInputEffect(std::string const& classId, std::string const& implName,
                                      EffectFactoryFunction factory, void* /*reserved*/) {
    Register({{classId, implName, EffectKind::VarInput, origin}, factory});
}

EffectFactoryFunction Registry::Find(std::string const& classId, std::string const& implName, EffectKind kind) const {
    {
        std::lock_guard const lock(mutex);
        Registration const* const found = FindPair(registrations, classId, implName);
        if (found != nullptr) return found->effect.kind == kind ? found->factory : nullptr;
    }
    return base != nullptr ? base->Find(classId, implName, kind) : nullptr;
}

void Registry::Register(Registration registration) {
    RegisteredEffect const& effect = registration.effect;
    if (registration.factory == nullptr)
        VELNOR_THROW(ProcException, "Effect \"" + effect.classId +
                                        "\" has no factory function for its implementation \"" + effect.implName +
                                        "\": the pointer is null.");
    std::lock_guard const lock(mutex);
    RequireNew(effect);
    registrations.push_back(std::move(registration));
}

/// The caller holds the lock. A registry is locked before the one below it, never after.
void Registry::RequireNew(RegisteredEffect const& effect) const {
    if (Registration const* const old = FindPair(registrations, effect.classId, effect.implName))
        VELNOR_THROW(ProcException, "Effect \"" + effect.classId + "\" has an implementation \"" + effect.implName +
                                        "\" already, registered by " + old->effect.origin + ".");
    if (base == nullptr) return;
    std::lock_guard const lock(base->mutex);
    base->RequireNew(effect);
}

void Registry::Merge(Registry const& staged) {
    std::vector<Registration> added = staged.GetAll();
    std::lock_guard const lock(mutex);
    for (Registration const& registration : added) RequireNew(registration.effect);
    registrations.reserve(registrations.size() + added.size());
    std::ranges::move(added, std::back_inserter(registrations));
}

std::vector<Registration> Registry::GetAll() const {
    std::lock_guard const lock(mutex);
    return registrations;
}

std::vector<Registration> Registry::GetAllOf(std::string const& classId) const {
    std::lock_guard const lock(mutex);
    std::vector<Registration> found;
    std::ranges::copy_if(registrations, std::back_inserter(found),
                         [&](Registration const& registration) { return registration.effect.classId == classId; });
    return found;
}

} // namespace Velnor::Proc
