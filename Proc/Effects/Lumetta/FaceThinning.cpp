// FaceThinning: slims every face along the jaw by a smooth map that the host's remapping samples.
#include "Proc/Effects/Lumetta/FaceWarp.h"
#include "Proc/Effects/Lumetta/Kernels/Faces/FaceGeometry.h"
#include "Proc/Settings/SettingsEffectFaceThinning.h"

namespace Velnor::Proc {

class FaceThinning : public FaceWarp<SettingsEffectFaceThinning, Kernels::JawMap> {
public:
    FaceThinning(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : FaceWarp(effectFactory, effectContext, LARGEST_PUSH) {}

private:
    /// At the full strength, of a face's width on either side. More pinches the mouth.
    static constexpr double LARGEST_PUSH = 0.07;
};

VELNOR_EFFECT(SettingsEffectFaceThinning, OneInput, FaceThinning)

} // namespace Velnor::Proc
