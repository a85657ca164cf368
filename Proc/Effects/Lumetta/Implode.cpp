// Implode: pinches the picture towards its centre or bulges it outwards, by a map that the host's remapping samples.
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Effects/Lumetta/Kernels/Geometry/ImplodeMap.h"
#include "Proc/Settings/SettingsEffectImplode.h"
#include "Proc/Settings/SettingsEffectRemapping.h"

namespace Velnor::Proc {

class Implode : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectImplode> {
public:
    Implode(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext), remapper(MakeOneInput(SettingsEffectRemapping())) {}

    void ProcessInternal(DataHandle& data) override {
        FrameFormat const& frame = data->GetFrameFormat();
        RunWith(*remapper, SettingsEffectRemapping(Kernels::ImplodeMap(frame.width, frame.height, GetAmount())), data);
    }

private:
    float GetAmount() const {
        double const strength = settings.GetStrength();
        double const direction = settings.GetMode() == 0 ? 1.0 : -0.5;
        return static_cast<float>(direction * strength / 100);
    }

    intrusive_ptr<IOneInputEffectVideo> remapper;
};

VELNOR_EFFECT(SettingsEffectImplode, OneInput, Implode)

} // namespace Velnor::Proc
