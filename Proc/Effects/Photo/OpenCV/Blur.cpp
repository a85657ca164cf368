// Blur: the weighted mean of each sample's neighbourhood, on OpenCV.
//
//     half-width = kernel length * deviation, to the nearest
//     box        every sample within the half-width counts the same
//     gaussian   exp(-x^2 / (2 deviation^2)) within the half-width, 0 beyond
//     stack      half-width + 1 - |x|
//
// Deviations in pixels are those of the picture: in planes of subsampled chroma they shrink with the resolution.
// Samples outside of the picture do not count. Alpha is blurred like a colour; a planes mask leaves it out. Colours
// count by their alpha: what is clear does not bleed into what is seen.
#include "Proc/Effects/Kit/ClearColours.h"
#include "Proc/Effects/Photo/AdaptedEffect.h"
#include "Proc/Effects/Photo/OpenCV/AlphaWeights.h"
#include "Proc/Effects/Photo/OpenCV/CVEffects.h"
#include "Proc/Effects/Photo/OpenCV/CVPicture.h"
#include "Proc/Effects/Photo/OpenCV/KernelBlur.h"
#include "Proc/Settings/SettingsEffectBlur.h"

#include <cmath>

namespace Velnor::Proc {
class Blur : public AdaptedEffect<SettingsEffectBlur>, public OnOpenCV {
public:
    using AdaptedEffect::AdaptedEffect;

    std::vector<PixFmt> const& GetSupportedFormats() const override { return PlaneFormats(); }

    void ProcessInternalCSC(DataHandle& data) override {
        IDataVideo const& picture = AsVideo(data);
        PixFmtDescription const& format = picture.GetDescription();
        FrameFormat const frame = picture.GetFrameFormat();
        bool const isPercent = settings.GetScaleType() == SettingsEffectBlur::PERCENT;
        double const devX = isPercent ? settings.GetScaleX() / 100.0 * frame.width : settings.GetDevX();
        double const devY = isPercent ? settings.GetScaleY() / 100.0 * frame.height : settings.GetDevY();
        VideoHandle const covered = CopyCovered(picture);
        IDataVideo const& source = *covered;
        VideoHandle const result = picture.MakeCopy(CopyMode::Value);
        for (unsigned char i = 0; i < format.planesCount; ++i) {
            if (settings.GetPlanesMask() != 0 && (settings.GetPlanesMask() >> i & 1) == 0) continue;
            PlaneLayout const& layout = format.planes[i];
            cv::Mat target = ViewOf(result->GetMutablePlane(i), layout);
            LinearBlur const blur =
                BlurPlane(ReadPlane(source, i), target, devX / (1 << layout.shiftX), devY / (1 << layout.shiftY));
            cv::Mat const weights = MakeAlphaWeights(source, i);
            int const alphaChannel = i == format.alpha.plane ? format.alpha.offset : -1;
            if (blur && !weights.empty()) BlurWeighted(ReadPlane(source, i), weights, alphaChannel, blur, target);
        }
        data = result;
    }

private:
    /// Beyond the picture's side nothing is left to count.
    int HalfWidth(double deviation, int side) const {
        return static_cast<int>(std::min<double>(std::round(settings.GetKernelLength() * deviation), side));
    }

    /// @return  the blur without its rounding, none where there is nothing to blur
    LinearBlur BlurPlane(cv::Mat const& source, cv::Mat& target, double devX, double devY) const {
        int const x = HalfWidth(devX, source.cols);
        int const y = HalfWidth(devY, source.rows);
        if (x == 0 && y == 0) {
            source.copyTo(target);
            return {};
        }
        if (settings.GetAlgorithm() == SettingsEffectBlur::BOX) {
            BlurByBox(source, target, x, y);
            return [=](cv::Mat const& samples) { return SumByBox(samples, x, y); };
        }
        bool const isGaussian = settings.GetAlgorithm() == SettingsEffectBlur::GAUSSIAN;
        auto const kernel = [&](double deviation, int halfWidth) {
            return isGaussian ? MakeGaussianKernel(deviation, halfWidth)
                              : MakeTriangleKernel(HalfWidth(deviation, LARGEST_PICTURE_SIDE));
        };
        HalfKernel const across = kernel(devX, x);
        HalfKernel const down = kernel(devY, y);
        BlurByKernels(source, target, across, down);
        return [=](cv::Mat const& samples) { return SumByKernels(samples, across, down); };
    }
};

intrusive_ptr<IEffect> CreateBlur(FactoryHandle const& factory, ContextHandle const& context) {
    return MakeCVEffect<Blur>(factory, context);
}

} // namespace Velnor::Proc
