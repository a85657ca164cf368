#pragma once

#include "Proc/Interfaces/IEffectRegistry.h"

namespace Velnor::Proc {

VELNOR_API intrusive_ptr<IEffect> CreateAlphaExtractor(FactoryHandle const& factory, ContextHandle const& context);
VELNOR_API intrusive_ptr<IEffect> CreateAlphaInserter(FactoryHandle const& factory, ContextHandle const& context);
VELNOR_API intrusive_ptr<IEffect> CreateColorBalance(FactoryHandle const& factory, ContextHandle const& context);
VELNOR_API intrusive_ptr<IEffect> CreateColorspaceConverter(FactoryHandle const& factory, ContextHandle const& context);
VELNOR_API intrusive_ptr<IEffect> CreateExtraAlphaExtractor(FactoryHandle const& factory, ContextHandle const& context);
VELNOR_API intrusive_ptr<IEffect> CreateImageBlender(FactoryHandle const& factory, ContextHandle const& context);
VELNOR_API intrusive_ptr<IEffect> CreateNoiseVideo(FactoryHandle const& factory, ContextHandle const& context);
VELNOR_API intrusive_ptr<IEffect> CreatePad(FactoryHandle const& factory, ContextHandle const& context);
VELNOR_API intrusive_ptr<IEffect> CreatePosterize(FactoryHandle const& factory, ContextHandle const& context);
VELNOR_API intrusive_ptr<IEffect> CreateRemapping(FactoryHandle const& factory, ContextHandle const& context);
VELNOR_API intrusive_ptr<IEffect> CreateResizer(FactoryHandle const& factory, ContextHandle const& context);
VELNOR_API intrusive_ptr<IEffect> CreateSplitToning(FactoryHandle const& factory, ContextHandle const& context);
VELNOR_API intrusive_ptr<IEffect> CreateVibrance(FactoryHandle const& factory, ContextHandle const& context);
VELNOR_API intrusive_ptr<IEffect> CreateVideoGenerator(FactoryHandle const& factory, ContextHandle const& context);

/// Registers the host's general effects, under ImplNames::DEFAULT. Throws what the registry throws.
void RegisterGeneralEffects(IEffectRegistry& registry);

} // namespace Velnor::Proc
