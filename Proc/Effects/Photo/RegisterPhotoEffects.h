#pragma once

#include "Proc/Interfaces/IEffectRegistry.h"

namespace Velnor::Proc {

/// Registers the host's effects on libraries that take long to load. None is loaded before an effect is created.
/// Throws what the registry throws.
void RegisterPhotoEffects(IEffectRegistry& registry);

} // namespace Velnor::Proc
