// Blur: box, gaussian or stack (a box blurred by a box: a triangle), of any width.
#include "Proc/Effects/Photo/BlurPlane.h"
#include "Proc/Effects/Photo/MatView.h"
#include "Proc/Effects/Photo/PhotoEffect.h"
#include "Proc/Effects/Photo/PhotoEffects.h"
#include "Proc/Settings/SettingsEffectBlur.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace Velnor::Proc {
namespace {

BlurShape ShapeOf(SettingsEffectBlur::Algorithm algorithm) {
    switch (algorithm) {
    case SettingsEffectBlur::BOX:
        return BlurShape::Box;
    case SettingsEffectBlur::STACK:
        return BlurShape::Stack;
    case SettingsEffectBlur::GAUSSIAN:
        return BlurShape::Gaussian;
    }
    VELNOR_THROW(EffectException, "The algorithm of the blur effect is " + std::to_string(static_cast<int>(algorithm)) +
                                      "; 0 to 2 are known.");
}

void Require(bool condition, std::string const& what, std::string const& value, std::string const& accepted) {
    if (!condition)
        VELNOR_THROW(EffectException, "The " + what + " of the blur effect is " + value + "; " + accepted + ".");
}

} // namespace

class Blur : public PhotoEffect<SettingsEffectBlur> {
public:
    using PhotoEffect::PhotoEffect;

    std::vector<PixFmt> const& GetSupportedFormats() const override { return PlanarOrPackedFormats(); }

    void ProcessInternalCSC(intrusive_ptr<IData>& data) override {
        IDataVideo const& picture = AsVideo(data);
        FrameFormat const frame = picture.GetFrameFormat();
        PixFmtDescription const& format = picture.GetDescription();
        BlurShape const shape = ShapeOf(settings.GetAlgorithm());
        BlurReach const across = GetReach(settings.GetDevX(), settings.GetScaleX(), frame.width);
        BlurReach const down = GetReach(settings.GetDevY(), settings.GetScaleY(), frame.height);
        auto const mask = static_cast<unsigned int>(settings.GetPlanesMask());
        WithOpenCV("blur", [&] {
            VideoHandle const result = picture.MakeCopy(CopyMode::Value);
            for (unsigned char i = 0; i < format.planesCount; ++i) {
                if (mask != 0 && (mask >> i & 1U) == 0) continue;
                cv::Mat samples = AsMat(result->GetMutablePlane(i));
                double const scaleX = 1.0 / (1U << format.planes[i].shiftX);
                double const scaleY = 1.0 / (1U << format.planes[i].shiftY);
                BlurPlane(samples, shape, {across.deviation * scaleX, across.halfWidth * scaleX},
                          {down.deviation * scaleY, down.halfWidth * scaleY});
            }
            data = result;
        });
    }

private:
    BlurReach GetReach(double deviation, double percent, std::uint32_t side) const {
        bool const isPercent = settings.GetScaleType() == SettingsEffectBlur::PERCENT;
        double const pixels = isPercent ? percent / 100 * side : deviation;
        int const length = settings.GetKernelLength();
        Require(length >= 1, "kernel length", std::to_string(length), "it is at least 1");
        Require(std::isfinite(pixels) && pixels >= 0, "deviation", std::to_string(pixels), "it is 0 or more");
        // Far beyond any picture, so that products stay finite.
        double const limited = std::min(pixels, 1e7);
        return {limited, limited * std::min(length, 1000)};
    }
};

intrusive_ptr<IEffect> CreateBlur(FactoryHandle const& factory, ContextHandle const& context) {
    return MakeEffect<Blur>(factory, context);
}

} // namespace Velnor::Proc
