// SmartBlur: smooths surfaces and keeps edges, by a guided filter whose guide is the plane itself, on OpenCV.
//
//     window    = square of half-width (radius / 100) * 3 % of the picture's shorter side, at least 1
//     keep      = variance / (variance + tolerance) in the window     1 at an edge, 0 on an even surface
//     tolerance = 20^2 * (blur / 50) * blur / (100 - blur)            400 at 50, without end at 100
//     result    = mean(keep) * value + mean((1 - keep) * mean) + sharpen / 100 * mean(keep) * detail
//     detail    = value - value blurred by a gaussian of deviation 1.5
//
// So a blur of 50 smooths contrasts below 20 levels and keeps those well above, and a blur of 100 keeps nothing: it is
// the mean of means, a defocus whose reach is twice the window. Only what is kept is sharpened. Luma and chroma have
// settings of their own; alpha stays, and in every mean colours count by it.
//
// K. He, J. Sun, X. Tang, "Guided Image Filtering", ECCV 2010.
#include "Proc/Effects/Photo/AdaptedEffect.h"
#include "Proc/Effects/Photo/OpenCV/AlphaWeights.h"
#include "Proc/Effects/Photo/OpenCV/CVEffects.h"
#include "Proc/Effects/Photo/OpenCV/CVPicture.h"
#include "Proc/Settings/SettingsEffectSmartBlur.h"

#include <opencv2/imgproc.hpp>

#include <array>
#include <cmath>

namespace Velnor::Proc {
namespace {

constexpr double REACH = 0.03;           ///< Half-width at a radius of 100, in parts of the shorter side.
constexpr double TOLERANCE = 400.0;      ///< Variance that counts as half an edge at a blur of 50.
constexpr double DETAIL_DEVIATION = 1.5; ///< Of the gaussian under the sharpening, in pixels.

struct Strength {
    int radius, blur, sharpen; ///< Percent.
};

void RequirePercent(char const* what, int value) {
    if (value < 0 || value > 100)
        VELNOR_THROW(EffectException, std::string("The ") + what + " of the smart blur is " + std::to_string(value) +
                                          " %; 0 to 100 are possible.");
}

cv::Mat Mean(cv::Mat const& samples, cv::Size window) {
    cv::Mat means;
    cv::boxFilter(samples, means, CV_32F, window, {-1, -1}, true, cv::BORDER_REFLECT | cv::BORDER_ISOLATED);
    return means;
}

/// @param weights  of the samples; empty where all count alike
cv::Mat Weigh(cv::Mat const& samples, cv::Mat const& weights, LinearBlur const& blur) {
    if (weights.empty()) return blur(samples);
    return blur(samples.mul(weights)) / blur(weights);
}

/// @param window  odd sides, in samples of the plane
void SmoothPlane(cv::Mat const& source, cv::Mat const& weights, cv::Mat& target, cv::Size window,
                 Strength const& strength) {
    auto const meanOf = [&](cv::Mat const& samples) {
        return Weigh(samples, weights, [&](cv::Mat const& each) { return Mean(each, window); });
    };
    cv::Mat value;
    source.convertTo(value, CV_32F);
    cv::Mat const mean = meanOf(value);
    cv::Mat keep = cv::Mat::zeros(value.size(), value.type());
    if (strength.blur < 100) {
        double const blur = strength.blur;
        double const tolerance = TOLERANCE * blur / 50.0 * blur / (100.0 - blur);
        cv::Mat const variance = cv::max(meanOf(value.mul(value)) - mean.mul(mean), 0.0);
        // An even surface, where both are 0, stays as it is in any case.
        cv::divide(variance, cv::max(variance + cv::Scalar::all(tolerance), 1e-6), keep);
    }
    cv::Mat const meanKeep = meanOf(keep);
    cv::Mat result = meanOf(mean - keep.mul(mean)) + meanKeep.mul(value);
    if (strength.sharpen > 0) {
        cv::Mat const smooth = Weigh(value, weights, [](cv::Mat const& samples) {
            cv::Mat blurred;
            cv::GaussianBlur(samples, blurred, {}, DETAIL_DEVIATION, DETAIL_DEVIATION, cv::BORDER_REFLECT);
            return blurred;
        });
        result += (value - smooth).mul(meanKeep, strength.sharpen / 100.0);
    }
    result.convertTo(target, CV_8U);
}

} // namespace

class SmartBlur : public AdaptedEffect<SettingsEffectSmartBlur>, public OnOpenCV {
public:
    using AdaptedEffect::AdaptedEffect;

    std::vector<PixFmt> const& GetSupportedFormats() const override { return LumaPlaneFormats(); }

    void ProcessInternal(DataHandle& data) override {
        RequirePercent("luma radius", settings.GetLumaRadius());
        RequirePercent("luma blur", settings.GetLumaBlur());
        RequirePercent("luma sharpening", settings.GetLumaSharpen());
        RequirePercent("chroma radius", settings.GetChromaRadius());
        RequirePercent("chroma blur", settings.GetChromaBlur());
        RequirePercent("chroma sharpening", settings.GetChromaSharpen());
        AdaptedEffect::ProcessInternal(data);
    }

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
            SmoothPlane(ReadPlane(picture, i), MakeAlphaWeights(picture, i), target,
                        Window(picture.GetFrameFormat(), layout, strength), strength);
        }
        data = result;
    }

private:
    /// The window on a plane of any resolution covers the same part of the picture.
    static cv::Size Window(FrameFormat const& frame, PlaneLayout const& layout, Strength const& strength) {
        double const reach = REACH * std::min(frame.width, frame.height) * strength.radius / 100.0;
        auto const side = [&](unsigned int shift) {
            return 2 * std::max(1, static_cast<int>(std::lround(reach / (1 << shift)))) + 1;
        };
        return {side(layout.shiftX), side(layout.shiftY)};
    }
};

intrusive_ptr<IEffect> CreateSmartBlur(FactoryHandle const& factory, ContextHandle const& context) {
    return MakeCVEffect<SmartBlur>(factory, context);
}

} // namespace Velnor::Proc
