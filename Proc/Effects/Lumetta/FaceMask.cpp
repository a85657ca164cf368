// FaceMask: replaces the picture by a grey mask of the faces in it, or of parts of them.
//
//     mask = max over faces of max(chosen parts, min(face, 255 - all parts) for the skin)
//
#include "Proc/Effects/Lumetta/Faces.h"
#include "Proc/Effects/Lumetta/Kernels/Faces/FaceContours.h"
#include "Proc/Settings/SettingsEffectFaceMask.h"

#include <algorithm>
#include <cstring>

namespace Velnor::Proc {
namespace {

using Kernels::Contour;

float GetWidth(Face const& face) {
    auto const jaw = face.Get(Face::JAW);
    return Kernels::Length(Kernels::operator-(jaw.back(), jaw.front()));
}

Contour Fill(Contour contour, float grow = 0) {
    contour.isFilled = true;
    contour.grow = grow;
    return contour;
}

std::vector<Contour> MakeEyes(Face const& face) {
    // Landmarks lie on the lids' edges; lashes are a little beyond.
    float const grow = 0.01F * GetWidth(face);
    return {Fill(Kernels::MakeContour(face, Face::LEFT_EYE, true), grow),
            Fill(Kernels::MakeContour(face, Face::RIGHT_EYE, true), grow)};
}

std::vector<Contour> MakeLips(Face const& face) { return {Fill(Kernels::MakeContour(face, Face::OUTER_LIPS, true))}; }

std::vector<Contour> MakeBrows(Face const& face) {
    std::vector<Contour> brows;
    for (Face::Part const& part : {Face::LEFT_BROW, Face::RIGHT_BROW}) {
        brows.push_back(Kernels::MakeContour(face, part, false));
        brows.back().grow = 0.03F * GetWidth(face);
    }
    return brows;
}

} // namespace

class FaceMask : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectFaceMask> {
public:
    FaceMask(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext), finder(MakeOneInput(SettingsEffectFaceDetector())) {}

    void ProcessInternal(DataHandle& data) override {
        std::vector<Face> const faces = finder.Find(data, GetInstanceName());
        FrameFormat const frame = data->GetFrameFormat();
        VideoHandle const mask = MakeEmpty(frame);
        for (Face const& face : faces) {
            Draw(*mask, face, settings.IsFace(), settings.IsEyes(), settings.IsLips(), settings.IsBrows());
            if (settings.IsSkin() && !settings.IsFace()) AddSkin(*mask, face);
        }
        data = mask;
        settings.SetFacesFound(static_cast<int>(faces.size()));
    }

private:
    VideoHandle MakeEmpty(FrameFormat const& frame) const {
        VideoHandle mask = context->CreateImage(PixFmt::GRAY8, frame);
        MutablePlane const plane = mask->GetMutablePlane(0);
        for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) std::memset(plane.GetRow(y), 0, plane.GetWidth());
        return mask;
    }

    void Draw(IDataVideo& mask, Face const& face, bool whole, bool eyes, bool lips, bool brows) const {
        auto const feather = static_cast<float>(settings.GetFeather() / 100) * GetWidth(face);
        MutablePlane const plane = mask.GetMutablePlane(0);
        auto const draw = [&](std::vector<Contour> const& contours) {
            for (Contour const& contour : contours) Kernels::DrawContour(plane, contour, feather);
        };
        if (whole) draw({Fill(Kernels::MakeFaceOutline(face))});
        if (eyes) draw(MakeEyes(face));
        if (lips) draw(MakeLips(face));
        if (brows) draw(MakeBrows(face));
    }

    void AddSkin(IDataVideo& mask, Face const& face) const {
        VideoHandle const whole = MakeEmpty(mask.GetFrameFormat());
        VideoHandle const parts = MakeEmpty(mask.GetFrameFormat());
        Draw(*whole, face, true, false, false, false);
        Draw(*parts, face, false, true, true, true);
        MutablePlane const target = mask.GetMutablePlane(0);
        ConstPlane const wholePlane = whole->GetPlane(0);
        ConstPlane const partsPlane = parts->GetPlane(0);
        for (std::uint64_t y = 0; y < target.GetHeight(); ++y) {
            unsigned char* const row = target.GetRow(y);
            unsigned char const* const inside = wholePlane.GetRow(y);
            unsigned char const* const without = partsPlane.GetRow(y);
            for (std::uint64_t x = 0; x < target.GetWidth(); ++x)
                row[x] = std::max(row[x], std::min(inside[x], static_cast<unsigned char>(255 - without[x])));
        }
    }

    FaceFinder finder;
};

VELNOR_EFFECT(SettingsEffectFaceMask, OneInput, FaceMask)

} // namespace Velnor::Proc
