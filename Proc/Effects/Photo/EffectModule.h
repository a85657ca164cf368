#pragma once

#include "Proc/Interfaces/IEffectRegistry.h"

namespace Velnor::Proc {

/// An effect that lives in a module beside the host, so that its library is loaded by those alone who create it.
struct ModuleEffect {
    std::string const* classId;  ///< Of the effect's settings.
    std::string const* implName; ///< Under which it is registered.
    EffectKind kind;
    char const* module; ///< File name, in GetInstalledFolder().
    char const* name;   ///< The module's own name of the effect.
};

/// A module's only export, with C linkage, under EFFECT_MODULE_ENTRY: the factory function of one of its effects, null
/// for a name that it does not know.
using EffectModuleFunction = EffectFactoryFunction (*)(char const* name);
inline constexpr char const* EFFECT_MODULE_ENTRY = "GetVelnorEffect";

/// The factory function of an effect, its module loaded. Throws ProcException, naming the module and the reason, when
/// the module cannot be loaded or has no such effect; a later call tries anew. Thread-safe.
EffectFactoryFunction FindModuleEffect(ModuleEffect const& effect);

} // namespace Velnor::Proc
