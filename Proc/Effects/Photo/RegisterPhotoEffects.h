#pragma once

#include "Proc/Interfaces/IEffectRegistry.h"

namespace Velnor::Proc {

/// Registers the host's effects on heavy libraries. Each lies in a module, a plug-in that is loaded when one of its
/// effects is first created: a command that needs none of them does not wait for any. Throws what the registry throws;
/// the creation of an effect whose module cannot be loaded throws ProcException with the file and the reason.
void RegisterPhotoEffects(IEffectRegistry& registry);

} // namespace Velnor::Proc
