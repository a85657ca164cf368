// SmartBlur: smooths surfaces and keeps edges, by a guided filter on each plane (see GuidedSmooth.h):
//
//     window    = square of half-width (radius / 100) * 3 % of the picture's shorter side, at least 1
//     tolerance = 20^2 * (blur / 50) * blur / (100 - blur)            400 at 50, without end at 100
//
// So a blur of 50 smooths contrasts below 20 levels and keeps those well above, and a blur of 100 keeps nothing: it is
// the mean of means, a defocus whose reach is twice the window. Only what is kept is sharpened. Luma and chroma have
// settings of their own; alpha stays, and in every mean colours count by it.
#include "Proc/Effects/Photo/AdaptedEffect.h"
#include "Proc/Effects/Photo/OpenCV/AlphaWeights.h"
#include "Proc/Effects/Photo/OpenCV/CVEffects.h"
#include "Proc/Effects/Photo/OpenCV/CVPicture.h"
#include "Proc/Effects/Photo/OpenCV/GuidedSmooth.h"
#include "Proc/Settings/SettingsEffectSmartBlur.h"

#include <cmath>
#include <limits>

namespace Velnor::Proc {
namespace {

constexpr double REACH = 0.03;      ///< Half-width at a radius of 100, in parts of the shorter side.
constexpr double TOLERANCE = 400.0; ///< Variance that counts as half an edge at a blur of 50.

struct Strength {
    int radius, blur, sharpen; ///< Percent.
};

/// 0 at a blur of 0, without end at 100.
double ToleranceOf(double blur) {
    return blur < 100 ? TOLERANCE * blur / 50.0 * blur / (100.0 - blur) : std::numeric_limits<double>::infinity();
}

} // namespace

class SmartBlur : public AdaptedEffect<SettingsEffectSmartBlur>, public OnOpenCV {
public:
    using AdaptedEffect::AdaptedEffect;

    std::vector<PixFmt> const& GetSupportedFormats() const override { return LumaPlaneFormats(); }

    void ProcessInternalCSC(DataHandle& data) override {
        IDataVideo const& picture = AsVideo(data);
        PixFmtDescription const& format = picture.GetDescription();
        VideoHandle const result = picture.MakeCopy(CopyMode::Value);
        Strength const luma{settings.GetLumaRadius(), settings.GetLumaBlur(), settings.GetLumaSharpen()};
        Strength const chroma{settings.GetChromaRadius(), settings.GetChromaBlur(), settings.GetChromaSharpen()};
        for (unsigned char i = 0; i < format.planesCount; ++i) {
            Strength const& strength = i == 0 ? luma : chroma;
            bool const isAlpha = format.hasAlpha && format.alpha.plane == i;
            if (isAlpha || (strength.blur == 0 && strength.sharpen == 0)) continue;
            PlaneLayout const& layout = format.planes[i];
            cv::Mat target = ViewOf(result->GetMutablePlane(i), layout);
            SmoothGuided(ReadPlane(picture, i), MakeAlphaWeights(picture, i), target,
                         {ReachOf(picture.GetFrameFormat(), layout, strength), ToleranceOf(strength.blur),
                          strength.sharpen / 100.0});
        }
        data = result;
    }

private:
    /// The window on a plane of any resolution covers the same part of the picture.
    static cv::Size ReachOf(FrameFormat const& frame, PlaneLayout const& layout, Strength const& strength) {
        double const reach = REACH * std::min(frame.width, frame.height) * strength.radius / 100.0;
        auto const along = [&](unsigned int shift) {
            return std::max(1, static_cast<int>(std::lround(reach / (1 << shift))));
        };
        return {along(layout.shiftX), along(layout.shiftY)};
    }
};

intrusive_ptr<IEffect> CreateSmartBlur(FactoryHandle const& factory, ContextHandle const& context) {
    return MakeCVEffect<SmartBlur>(factory, context);
}

} // namespace Velnor::Proc
