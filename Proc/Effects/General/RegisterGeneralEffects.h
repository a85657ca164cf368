#pragma once

#include "Proc/Interfaces/IEffectRegistry.h"

namespace Velnor::Proc {

/// Registers the host's general effects, under ImplNames::DEFAULT. Throws what the registry throws.
VELNOR_API void RegisterGeneralEffects(IEffectRegistry& registry);

} // namespace Velnor::Proc
