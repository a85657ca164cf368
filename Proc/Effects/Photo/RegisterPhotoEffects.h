#pragma once

#include "Proc/Interfaces/IEffectRegistry.h"

namespace Velnor::Proc {

/// Registers the effects that stand on a heavy library. Each lies in a module of the host's installed folder, which is
/// loaded when the first effect of it is created: that throws ProcException, naming the module, when it cannot be.
void RegisterPhotoEffects(IEffectRegistry& registry);

} // namespace Velnor::Proc
