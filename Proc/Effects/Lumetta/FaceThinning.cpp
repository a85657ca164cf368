// FaceThinning: slims every face along the jaw by a smooth map that the host's remapping samples.
#include "Proc/Effects/Lumetta/Faces.h"
#include "Proc/Effects/Lumetta/Kernels/Faces/FaceGeometry.h"
#include "Proc/Settings/SettingsEffectFaceThinning.h"
#include "Proc/Settings/SettingsEffectRemapping.h"

namespace Velnor::Proc {
namespace {

/// At the full strength, of a face's width on either side. More pinches the mouth.
constexpr double LARGEST_PUSH = 0.07;

} // namespace

class FaceThinning : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectFaceThinning> {
public:
    FaceThinning(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext),
          finder(MakeOneInput(SettingsEffectFaceDetector())),
          remapper(MakeOneInput(SettingsEffectRemapping())) {}

    void ProcessInternal(intrusive_ptr<IData>& data) override {
        std::vector<Face> const faces = finder.Find(data, GetInstanceName());
        if (!faces.empty()) Remap(data, faces);
        settings.SetFacesFound(static_cast<int>(faces.size()));
    }

private:
    void Remap(intrusive_ptr<IData>& data, std::vector<Face> const& faces) const {
        auto const amount = static_cast<float>(settings.GetStrength() / 100 * LARGEST_PUSH);
        RunWith(*remapper, SettingsEffectRemapping(Kernels::JawMap(faces, amount)), data);
    }

    FaceFinder finder;
    intrusive_ptr<IOneInputEffectVideo> remapper;
};

VELNOR_EFFECT(SettingsEffectFaceThinning, OneInput, FaceThinning)

} // namespace Velnor::Proc
