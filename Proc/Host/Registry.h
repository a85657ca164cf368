#pragma once

#include "Proc/Host/Host.h"
#include "Proc/Interfaces/ImplNames.h"

#include <algorithm>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace Velnor::Proc {

struct Registration {
    RegisteredEffect effect;
    EffectFactoryFunction factory = nullptr;
};

/// The effects that the host knows, in order of registration. Thread-safe.
///
/// A registry can be staged over another: it sees the other's effects and collects new ones, which Merge then hands
/// over all at once or not at all. So a plug-in that fails halfway leaves no trace.
class VELNOR_API Registry : public IEffectRegistry {
public:
    /// @param effectOrigin what is noted as the origin of each effect registered here
    /// @param below        the registry that this one is staged over, which must outlive it; null for none
    explicit Registry(std::string effectOrigin, Registry const* below = nullptr);

    EffectFactoryFunction FindOneInputEffect(std::string const& classId, std::string const& implName) const override;
    EffectFactoryFunction FindTwoInputEffect(std::string const& classId, std::string const& implName) const override;
    EffectFactoryFunction FindVarInputEffect(std::string const& classId, std::string const& implName) const override;

    /// Each throws ProcException, registering nothing, for a pair that is there already, of whatever kind, and for a
    /// null factory.
    void RegisterOneInputEffect(std::string const& classId, std::string const& implName, EffectFactoryFunction factory,
                                void* reserved) override;
    void RegisterTwoInputEffect(std::string const& classId, std::string const& implName, EffectFactoryFunction factory,
                                void* reserved) override;
    void RegisterVarInputEffect(std::string const& classId, std::string const& implName, EffectFactoryFunction factory,
                                void* reserved) override;

    /// Takes over the effects of a staged registry. Throws ProcException, taking none, when one of them is there.
    void Merge(Registry const& staged);

    std::vector<Registration> GetAll() const;                             ///< Those below are left out.
    std::vector<Registration> GetAllOf(std::string const& classId) const; ///< As GetAll, of one class.

private:
    EffectFactoryFunction Find(std::string const& classId, std::string const& implName, EffectKind kind) const;
    void Register(Registration registration);
    void RequireNew(RegisteredEffect const& effect) const;

    std::string const origin;
    Registry const* const base;
    mutable std::mutex mutex;
    std::vector<Registration> registrations;
};

/// The one of these that the default implementation stands for: what goes by that name, else the framework's own, else
/// the first; the end where there is none.
/// @param effectOf  the RegisteredEffect of an element
template <class Elements, class Projection = std::identity>
auto FindDefault(Elements&& elements, Projection effectOf = {}) {
    auto const nameOf = [&](auto const& element) { return std::invoke(effectOf, element).implName; };
    for (std::string const& preferred : {ImplNames::DEFAULT, ImplNames::VELNOR})
        if (auto const found = std::ranges::find(elements, preferred, nameOf); found != elements.end()) return found;
    return elements.begin();
}

/// "one-input", as messages name a kind.
VELNOR_API char const* GetKindName(EffectKind kind);

} // namespace Velnor::Proc
