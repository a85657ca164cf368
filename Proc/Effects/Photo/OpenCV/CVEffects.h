#pragma once

#include "Proc/Interfaces/IEffectRegistry.h"

namespace Velnor::Proc {

intrusive_ptr<IEffect> CreateBlur(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateCLAHE(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateGrabCutSegmentation(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateMidEqualizer(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateMorphology(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateRotate(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateSmartBlur(FactoryHandle const& factory, ContextHandle const& context);

} // namespace Velnor::Proc
