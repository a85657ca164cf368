// Aligner: turns, scales and crops the picture so that the eyes of its largest face are level at a chosen place.
//
//     crop    = the largest rectangle of the result's shape that the picture's frame holds
//     picture = resizer(crop of remapper(picture))     one similarity; beyond the picture its edges go on
//
#include "Proc/Effects/Lumetta/Faces.h"
#include "Proc/Effects/Lumetta/Kernels/Faces/FaceGeometry.h"
#include "Proc/Settings/SettingsEffectAligner.h"
#include "Proc/Settings/SettingsEffectRemapping.h"
#include "Proc/Settings/SettingsResizer.h"

#include <algorithm>
#include <cmath>

namespace Velnor::Proc {
namespace {

/// The largest rectangle of the target's shape in the frame, at least a pixel.
FrameFormat FitCrop(FrameFormat const& frame, FrameFormat const& target) {
    double const scale =
        std::min(static_cast<double>(frame.width) / target.width, static_cast<double>(frame.height) / target.height);
    auto const side = [&](std::uint32_t wanted, std::uint32_t most) {
        return std::clamp(static_cast<std::uint32_t>(std::lround(wanted * scale)), 1U, most);
    };
    return FrameFormat::Square(side(target.width, frame.width), side(target.height, frame.height));
}

} // namespace

class Aligner : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectAligner> {
public:
    Aligner(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext),
          finder(MakeOneInput(SettingsEffectFaceDetector())),
          remapper(MakeOneInput(SettingsEffectRemapping())),
          resizer(MakeOneInput(SettingsResizer())) {}

    void ProcessInternal(DataHandle& data) override {
        std::vector<Face> const faces = finder.Find(data, GetInstanceName());
        if (!faces.empty()) Align(data, faces.front());
        settings.SetFacesFound(static_cast<int>(faces.size()));
    }

private:
    void Align(DataHandle& data, Face const& face) const {
        FrameFormat const frame = data->GetFrameFormat();
        FrameFormat target = frame;
        if (settings.GetWidth() > 0) target.width = static_cast<std::uint32_t>(settings.GetWidth());
        if (settings.GetHeight() > 0) target.height = static_cast<std::uint32_t>(settings.GetHeight());
        FrameFormat const crop = FitCrop(frame, target);
        RunWith(*remapper, SettingsEffectRemapping(MakeMap(face, crop)), data);
        data = AsVideo(data).MakePart({0, 0, crop.width, crop.height});
        if (!IsSameSize(crop, target)) Resize(data, target);
    }

    /// The similarity that takes the chosen places of the eyes to where they are.
    SettingsEffectRemapping::Map MakeMap(Face const& face, FrameFormat const& crop) const {
        using namespace Kernels;
        Face::Point const left = Middle(face, Face::LEFT_EYE);
        Face::Point const apart = Middle(face, Face::RIGHT_EYE) - left;
        Face::Point const middle = left + apart * 0.5F;
        auto const shorter = static_cast<double>(std::min(crop.width, crop.height));
        // Per pixel of the result, the step in the picture to the right; the step down is square to it.
        Face::Point const step = apart * static_cast<float>(100 / (settings.GetEyesDistance() * shorter));
        Face::Point const eyes{static_cast<float>(settings.GetEyesX() / 100 * (crop.width - 1)),
                               static_cast<float>(settings.GetEyesY() / 100 * (crop.height - 1))};
        return [=](int x, int y) {
            float const dx = static_cast<float>(x) - eyes.x;
            float const dy = static_cast<float>(y) - eyes.y;
            return std::pair(middle.x + step.x * dx - step.y * dy, middle.y + step.y * dx + step.x * dy);
        };
    }

    void Resize(DataHandle& data, FrameFormat const& target) const {
        RunWith(
            *resizer,
            SettingsResizer().SetMode(SettingsResizer::TO_FRAME).SetFitting(SettingsResizer::STRETCH).SetTarget(target),
            data);
    }

    FaceFinder finder;
    intrusive_ptr<IOneInputEffectVideo> remapper;
    intrusive_ptr<IOneInputEffectVideo> resizer;
};

VELNOR_EFFECT(SettingsEffectAligner, OneInput, Aligner)

} // namespace Velnor::Proc
