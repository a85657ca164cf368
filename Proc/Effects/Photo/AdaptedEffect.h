#pragma once

#include "Proc/Effects/Kit/EffectBaseCSC.h"

#include <algorithm>

namespace Velnor::Proc {

/// Base of effects whose library takes some formats only. A picture in one of GetSupportedFormats() goes in as it is;
/// any other is converted to the one that loses least of it, and the result is converted back. Palette pictures come
/// back with a palette of their own.
template <class SettingsClass>
class AdaptedEffect : public EffectBaseCSC<IOneInputEffectVideo, SettingsClass> {
public:
    AdaptedEffect(FactoryHandle const& effectFactory, ContextHandle const& effectContext,
                  std::string const& implementation = ImplNames::DEFAULT)
        : EffectBaseCSC<IOneInputEffectVideo, SettingsClass>(effectFactory, effectContext, implementation) {}

    bool ConvertBack() const override { return true; }

    void ProcessInternal(DataHandle& data) override {
        if (std::ranges::count(this->GetSupportedFormats(), data->GetPixFmt()) > 0)
            this->ProcessInternalCSC(data);
        else
            EffectBaseCSC<IOneInputEffectVideo, SettingsClass>::ProcessInternal(data);
    }
};

} // namespace Velnor::Proc
