// EyeExtending: enlarges the eyes of every face by a round, smooth map that the host's remapping samples.
#include "Proc/Effects/Lumetta/Faces.h"
#include "Proc/Effects/Lumetta/Kernels/Faces/FaceGeometry.h"
#include "Proc/Settings/SettingsEffectEyeExtending.h"
#include "Proc/Settings/SettingsEffectRemapping.h"

namespace Velnor::Proc {
namespace {

/// At the full strength: an iris shows a third larger. More looks like a doll.
constexpr double LARGEST_SHRINK = 0.25;

} // namespace

class EyeExtending : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectEyeExtending> {
public:
    EyeExtending(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
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
        auto const amount = static_cast<float>(settings.GetStrength() / 100 * LARGEST_SHRINK);
        RunWith(*remapper, SettingsEffectRemapping(Kernels::EyeMap(faces, amount)), data);
    }

    FaceFinder finder;
    intrusive_ptr<IOneInputEffectVideo> remapper;
};

VELNOR_EFFECT(SettingsEffectEyeExtending, OneInput, EyeExtending)

} // namespace Velnor::Proc
