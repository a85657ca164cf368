#pragma once

#include "Proc/Effects/Lumetta/EffectBaseCSC.h"

namespace Velnor::Proc {

/// The formats whose planes can be filtered one by one: no palette, no luma between chroma samples.
std::vector<PixFmt> const& PlanarOrPackedFormats();

/// The formats that keep brightness in a plane of its own, and grey.
std::vector<PixFmt> const& LumaPlaneFormats();

/// Base of the host's effects on OpenCV: pictures in other formats than those of `GetSupportedFormats` are converted and
/// converted back.
template <class SettingsClass>
class PhotoEffect : public EffectBaseCSC<IOneInputEffectVideo, SettingsClass> {
public:
    PhotoEffect(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSC<IOneInputEffectVideo, SettingsClass>(effectFactory, effectContext, ImplNames::DEFAULT) {}

    bool ConvertBack() const override { return true; }
};

} // namespace Velnor::Proc
