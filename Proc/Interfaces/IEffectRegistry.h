#pragma once

#include "Proc/Interfaces/IEffectContext.h"
#include "Proc/Interfaces/IEffectFactory.h"

#include <string>

namespace Velnor::Proc {

namespace Details {

/// Stands in the contract's library, and whatever is compiled with this header refers to it: so a plug-in needs that
/// library, whose name holds the contract's version, even when it calls nothing of it and the linker drops what is not
/// called.
extern VELNOR_API char const CONTRACT_MARK;
[[gnu::used]] static char const* const needsContract = &CONTRACT_MARK;

} // namespace Details

/// Makes one effect. The handle returned is its only one.
using EffectFactoryFunction = intrusive_ptr<IEffect> (*)(intrusive_ptr<IEffectFactory> const& factory,
                                                         intrusive_ptr<IEffectContext> const& context);

/// What a plug-in registers its effects with. An effect is known by the class identifier of its settings and the name
/// of its implementation; registering a pair twice throws ProcException. `reserved` is null. The order of the virtual
/// operations is binary contract.
class VELNOR_API IEffectRegistry {
public:
    virtual ~IEffectRegistry() = default; // 1st

    virtual EffectFactoryFunction FindOneInputEffect(std::string const& classId,
                                                     std::string const& implName) const = 0; // 2nd: null when missing
    virtual void RegisterOneInputEffect(std::string const& classId, std::string const& implName,
                                        EffectFactoryFunction factory, void* reserved) = 0; // 3rd
    virtual EffectFactoryFunction FindTwoInputEffect(std::string const& classId,
                                                     std::string const& implName) const = 0; // 4th
    virtual void RegisterTwoInputEffect(std::string const& classId, std::string const& implName,
                                        EffectFactoryFunction factory, void* reserved) = 0; // 5th
    virtual EffectFactoryFunction FindVarInputEffect(std::string const& classId,
                                                     std::string const& implName) const = 0; // 6th
    virtual void RegisterVarInputEffect(std::string const& classId, std::string const& implName,
                                        EffectFactoryFunction factory, void* reserved) = 0; // 7th
};

/// A plug-in's only export, with C linkage: registers its effects and keeps no state.
using RegistratorFunction = void (*)(IEffectRegistry* registry);

} // namespace Velnor::Proc
