// DrawFace: draws what the host's detector finds of faces. All lines go into one mask first, so that those of a
// transparent colour do not add up where they cross.
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Effects/Kit/PackedFormats.h"
#include "Proc/Effects/Lumetta/Faces.h"
#include "Proc/Effects/Lumetta/Kernels/Faces/FaceContours.h"
#include "Proc/Settings/SettingsEffectDrawFace.h"

#include <algorithm>
#include <cstring>

namespace Velnor::Proc {
namespace {

using Kernels::Contour;

Contour MakeBox(Face const& face) {
    auto const left = static_cast<float>(face.left);
    auto const top = static_cast<float>(face.top);
    float const right = left + static_cast<float>(std::max(face.width - 1, 0));
    float const bottom = top + static_cast<float>(std::max(face.height - 1, 0));
    return {{{left, top}, {right, top}, {right, bottom}, {left, bottom}}, true, false, 0};
}

std::vector<Contour> MakeContours(Face const& face, SettingsEffectDrawFace const& settings) {
    std::vector<Contour> contours;
    if (settings.IsBoxes()) contours.push_back(MakeBox(face));
    if (settings.IsContours()) {
        for (Face::Part const& part : {Face::JAW, Face::LEFT_BROW, Face::RIGHT_BROW, Face::NOSE})
            contours.push_back(Kernels::MakeContour(face, part, false));
        for (Face::Part const& part : {Face::LEFT_EYE, Face::RIGHT_EYE, Face::OUTER_LIPS, Face::INNER_LIPS})
            contours.push_back(Kernels::MakeContour(face, part, true));
    }
    auto const halfWidth = static_cast<float>(settings.GetLineWidth() / 2);
    for (Contour& contour : contours) contour.grow = halfWidth;
    if (settings.IsLandmarks())
        for (Face::Point const& point : face.landmarks) contours.push_back({{point}, false, false, 2 * halfWidth});
    return contours;
}

/// Mixes the colour into the first three bytes of the pixels, by the mask and the colour's opacity.
void Paint(ConstPlane const& mask, Kernels::PackedRgb const& format, Color const& color, MutablePlane const& plane) {
    unsigned int const components[] = {format.isBlueFirst ? color.GetBlue() : color.GetRed(), color.GetGreen(),
                                       format.isBlueFirst ? color.GetRed() : color.GetBlue()};
    unsigned int const opacity = color.GetOpacity();
    constexpr unsigned int WHOLE = 255 * 255;
    for (std::uint64_t y = 0; y < mask.GetHeight(); ++y) {
        unsigned char const* const levels = mask.GetRow(y);
        unsigned char* pixel = plane.GetRow(y);
        for (std::uint64_t x = 0; x < mask.GetWidth(); ++x, pixel += format.pixelBytes) {
            unsigned int const share = levels[x] * opacity;
            if (share == 0) continue;
            for (unsigned int i = 0; i < 3; ++i)
                pixel[i] = static_cast<unsigned char>((pixel[i] * (WHOLE - share) + components[i] * share + WHOLE / 2) /
                                                      WHOLE);
        }
    }
}

} // namespace

class DrawFace : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectDrawFace> {
public:
    DrawFace(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSC(effectFactory, effectContext), finder(MakeOneInput(SettingsEffectFaceDetector())) {}

    std::vector<PixFmt> const& GetSupportedFormats() const override { return Kernels::PackedRgbFormats(); }
    bool ConvertBack() const override { return true; }

    /// Without a face nothing is converted: the picture keeps every byte.
    void ProcessInternal(DataHandle& data) override {
        faces = finder.Find(data, GetInstanceName());
        if (!faces.empty()) EffectBaseCSC::ProcessInternal(data);
        settings.SetFacesFound(static_cast<int>(faces.size()));
    }

    void ProcessInternalCSC(DataHandle& data) override {
        VideoHandle const mask = context->CreateImage(PixFmt::GRAY8, data->GetFrameFormat());
        MutablePlane const levels = mask->GetMutablePlane(0);
        for (std::uint64_t y = 0; y < levels.GetHeight(); ++y) std::memset(levels.GetRow(y), 0, levels.GetWidth());
        for (Face const& face : faces)
            for (Contour const& contour : MakeContours(face, settings)) Kernels::DrawContour(levels, contour, 1);
        Paint(levels, Kernels::PackedRgb(data->GetPixFmt()), settings.GetLineColor(), AsVideo(data).GetMutablePlane(0));
    }

private:
    FaceFinder finder;
    std::vector<Face> faces; ///< Of the picture in work.
};

VELNOR_EFFECT(SettingsEffectDrawFace, OneInput, DrawFace)

} // namespace Velnor::Proc
