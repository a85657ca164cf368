#pragma once

#include "Proc/Effects/Lumetta/Faces.h"
#include "Proc/Settings/SettingsEffectRemapping.h"

namespace Velnor::Proc {

/// Base of effects that move what faces are made of: the host's remapping samples the picture by a smooth map that is
/// made of all faces.
/// @tparam Map  made of the faces and an amount
template <class SettingsClass, class Map>
class FaceWarp : public EffectBaseOneInput<IOneInputEffectVideo, SettingsClass> {
public:
    /// @param amount  of the map at the full strength
    FaceWarp(FactoryHandle const& effectFactory, ContextHandle const& effectContext, double amount)
        : EffectBaseOneInput<IOneInputEffectVideo, SettingsClass>(effectFactory, effectContext),
          largestAmount(amount),
          finder(this->MakeOneInput(SettingsEffectFaceDetector())),
          remapper(this->MakeOneInput(SettingsEffectRemapping())) {}

    void ProcessInternal(DataHandle& data) override {
        std::vector<Face> const faces = finder.Find(data, this->GetInstanceName());
        auto const amount = static_cast<float>(this->settings.GetStrength() / 100 * largestAmount);
        if (!faces.empty()) RunWith(*remapper, SettingsEffectRemapping(Map(faces, amount)), data);
        this->settings.SetFacesFound(static_cast<int>(faces.size()));
    }

private:
    double const largestAmount;
    FaceFinder const finder;
    intrusive_ptr<IOneInputEffectVideo> const remapper;
};

} // namespace Velnor::Proc
