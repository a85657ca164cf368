#pragma once

#include "Proc/Host/Host.h"

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

/// "one-input", as messages name a kind.
VELNOR_API char const* GetKindName(EffectKind kind);

} // namespace Velnor::Proc
