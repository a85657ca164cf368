#pragma once

#include "Proc/Host/Registry.h"

#include <memory>
#include <string>
#include <vector>

namespace Velnor::Proc {

/// Makes the effects of a registry, which it keeps alive: effects hold their factory, and may outlive the host.
class VELNOR_API Factory : public IEffectFactory {
public:
    Factory(std::shared_ptr<Registry const> effectRegistry, ContextHandle effectContext);

    using IEffectFactory::CreateOneInputEffect;
    using IEffectFactory::CreateTwoInputEffect;
    using IEffectFactory::CreateVarInputEffect;

    bool Has(std::string const& classId, std::string const& implName) const override;
    EffectKind GetKind(std::string const& classId, std::string const& implName) const override;
    std::vector<std::string> GetClassIds() const override; ///< In order of registration, each once.
    std::vector<std::string> GetImplNames(std::string const& classId) const override; ///< In order of registration.
    intrusive_ptr<IEffect> CreateEffect(std::string const& classId, std::string const& implName) override;
    bool HasOneInputEffect(std::string const& classId, std::string const& implName) const override;
    void CreateOneInputEffect(intrusive_ptr<IOneInputEffectVideo>* result, std::string const& classId,
                              std::string const& implName) override;
    bool HasTwoInputEffect(std::string const& classId, std::string const& implName) const override;
    bool HasVarInputEffect(std::string const& classId, std::string const& implName) const override;
    void CreateVarInputEffect(intrusive_ptr<IVarInputEffectVideo>* result, std::string const& classId,
                              std::string const& implName) override;
    void CreateTwoInputEffect(intrusive_ptr<ITwoInputEffectVideo>* result, std::string const& classId,
                              std::string const& implName) override;

private:
    intrusive_ptr<IEffect> Create(Registration const& registration);
    template <class Effect>
    intrusive_ptr<Effect> CreateOfKind(std::string const& classId, std::string const& implName, EffectKind kind);

    std::shared_ptr<Registry const> const registry;
    ContextHandle const context;
};

} // namespace Velnor::Proc
