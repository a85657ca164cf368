// Smart blur: a guided filter (K. He, J. Sun, X. Tang, "Guided Image Filtering", PAMI 35, 2013) with each plane as its
// own guide. In every window the picture is taken as a * picture + mean * (1 - a), a = variance / (variance + eps): near
// edges a is near 1 and they stay, on surfaces it is near 0 and they become their mean.
//
//     blur b in percent:      sqrt(eps) = 25 * b / (100 - b) levels, so that 100 smooths everything: defocus
//     radius r in percent:    window of r % of a fortieth of the shorter side on each side of a pixel
//     sharpen s in percent:   adds s % of what a keeps of the detail: edges, not surfaces
#include "Proc/Effects/Photo/MatView.h"
#include "Proc/Effects/Photo/PhotoEffect.h"
#include "Proc/Effects/Photo/PhotoEffects.h"
#include "Proc/Settings/SettingsEffectSmartBlur.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Velnor::Proc {
namespace {

struct PlaneSettings {
    int radius = 0; ///< All in percent.
    int blur = 0;
    int sharpen = 0;
};

void Smooth(cv::Mat& samples, PlaneSettings const& settings, double windowSide) {
    auto const percent = [](int value) { return std::clamp(value, 0, 100) / 100.0; };
    int const radius = static_cast<int>(std::lround(windowSide * percent(settings.radius)));
    double const blur = percent(settings.blur);
    double const sharpen = percent(settings.sharpen);
    if (radius < 1 || (blur <= 0 && sharpen <= 0)) return;
    double const deviation = blur < 1 ? 25.0 * blur / (1 - blur) : std::numeric_limits<float>::max();
    auto const eps = static_cast<float>(std::min(deviation * deviation, 1e12));

    cv::Size const window(2 * radius + 1, 2 * radius + 1);
    auto const mean = [&](cv::Mat const& source) {
        cv::Mat result;
        cv::boxFilter(source, result, CV_32F, window, {-1, -1}, true, cv::BORDER_REFLECT);
        return result;
    };
    cv::Mat picture;
    samples.convertTo(picture, CV_32F);
    cv::Mat const average = mean(picture);
    cv::Mat variance = mean(picture.mul(picture)) - average.mul(average);
    variance = cv::max(variance, 0);
    cv::Mat keep; // a; where a flat window meets no blur at all, either value gives the same.
    cv::divide(variance, variance + (eps + 1e-3F), keep);
    cv::Mat const rest = average - keep.mul(average);
    cv::Mat const kept = mean(keep);
    cv::Mat smooth = kept.mul(picture) + mean(rest);
    if (sharpen > 0) smooth += kept.mul(picture - mean(picture)) * sharpen;
    smooth.convertTo(samples, samples.type());
}

} // namespace

class SmartBlur : public PhotoEffect<SettingsEffectSmartBlur> {
public:
    using PhotoEffect::PhotoEffect;

    /// Three planes of one kind each, so that luma and chroma have windows of their own.
    std::vector<PixFmt> const& GetSupportedFormats() const override {
        static std::vector<PixFmt> const formats{PixFmt::GRAY8,    PixFmt::YUV444P, PixFmt::YUV422P, PixFmt::YUV420P,
                                                 PixFmt::YUV411P,  PixFmt::YUV410P, PixFmt::YUV440P, PixFmt::YUVA420P,
                                                 PixFmt::YUVA422P, PixFmt::YUVA444P};
        return formats;
    }

    void ProcessInternalCSC(intrusive_ptr<IData>& data) override {
        IDataVideo const& picture = AsVideo(data);
        PixFmtDescription const& format = picture.GetDescription();
        FrameFormat const frame = picture.GetFrameFormat();
        double const windowSide = std::min(frame.width, frame.height) / 40.0;
        PlaneSettings const luma{settings.GetLumaRadius(), settings.GetLumaBlur(), settings.GetLumaSharpen()};
        PlaneSettings const chroma{settings.GetChromaRadius(), settings.GetChromaBlur(), settings.GetChromaSharpen()};
        WithOpenCV("smart blur", [&] {
            VideoHandle const result = picture.MakeCopy(CopyMode::Value);
            for (unsigned char i = 0; i < std::min<int>(format.planesCount, 3); ++i) {
                cv::Mat samples = AsMat(result->GetMutablePlane(i));
                int const shift = std::max(format.planes[i].shiftX, format.planes[i].shiftY);
                Smooth(samples, i == 0 ? luma : chroma, windowSide / (1 << shift));
            }
            data = result;
        });
    }
};

intrusive_ptr<IEffect> CreateSmartBlur(FactoryHandle const& factory, ContextHandle const& context) {
    return MakeEffect<SmartBlur>(factory, context);
}

} // namespace Velnor::Proc
