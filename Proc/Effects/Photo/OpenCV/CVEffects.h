#pragma once

#include "Proc/Interfaces/IEffectRegistry.h"

namespace Velnor::Proc {

intrusive_ptr<IEffect> CreateBlur(FactoryHandle const& factory, ContextHandle const& context);

} // namespace Velnor::Proc
