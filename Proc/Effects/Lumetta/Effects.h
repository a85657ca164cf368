#pragma once

#include "Proc/Interfaces/IEffectRegistry.h"

namespace Velnor::Proc {

// The factory function of each effect, defined last in the effect's own source.
intrusive_ptr<IEffect> CreateAligner(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateAutoEnhance(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateAutoGlareRemove(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateBalanceLuma(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateBiColorToning(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateBlackWhite(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateBlendPalette(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateBlurBokeh(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateBlurRadial(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateColorBalanceAuto(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateColorReduce(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateColoredGlass(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateCustom(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateCutter(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateDetailsEnhance(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateDirectionalAreaDeformation(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateDrawFace(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateEdgeRemove(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateEmptyEffect(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateEyeExtending(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateFaceMask(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateFaceThinning(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateGrabCut(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateGradient(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateGradientPosterize(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateGridGraph(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateHistogram(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateHorizonDetector(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateImplode(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateOilPaint(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreatePixelate(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateReduceLocalLuma(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateRemoveBackground(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateReplaceChroma(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateRestorer(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateShapeMask(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateSketch(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateStitcher(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateTiltShift(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateTintTemperature(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateVignette(FactoryHandle const& factory, ContextHandle const& context);
intrusive_ptr<IEffect> CreateWhiteBalance(FactoryHandle const& factory, ContextHandle const& context);

} // namespace Velnor::Proc

/// The plug-in's only export: registers its effects, in the order of the contract. What the registry throws passes
/// through and ends the registration.
extern "C" VELNOR_API void Registrator(Velnor::Proc::IEffectRegistry* registry);
