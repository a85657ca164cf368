// EyeExtending: enlarges the eyes of every face by a round, smooth map that the host's remapping samples.
#include "Proc/Effects/Lumetta/FaceWarp.h"
#include "Proc/Effects/Lumetta/Kernels/Faces/FaceGeometry.h"
#include "Proc/Settings/SettingsEffectEyeExtending.h"

namespace Velnor::Proc {

class EyeExtending : public FaceWarp<SettingsEffectEyeExtending, Kernels::EyeMap> {
public:
    EyeExtending(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : FaceWarp(effectFactory, effectContext, LARGEST_SHRINK) {}

private:
    /// At the full strength: an iris shows a third larger. More looks like a doll.
    static constexpr double LARGEST_SHRINK = 0.25;
};

VELNOR_EFFECT(SettingsEffectEyeExtending, OneInput, EyeExtending)

} // namespace Velnor::Proc
