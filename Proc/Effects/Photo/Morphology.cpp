// Morphology: erosion, dilation, opening, closing and smoothing of bright areas with a disc (Serra, "Image Analysis and
// Mathematical Morphology", 1982). Each colour component and grey on its own; alpha stays. Beyond the edge there is
// nothing that could win: neither bright for a dilation nor dark for an erosion.
#include "Proc/Effects/Lumetta/EffectBaseCSC.h"
#include "Proc/Effects/Photo/MatView.h"
#include "Proc/Effects/Photo/PhotoEffects.h"
#include "Proc/Settings/SettingsEffectMorphology.h"

#include <opencv2/imgproc.hpp>

#include <string>

namespace Velnor::Proc {
namespace {

/// All offsets within `radius` of the centre: a cross for 1.
cv::Mat MakeDisc(int radius) {
    cv::Mat disc(2 * radius + 1, 2 * radius + 1, CV_8U, cv::Scalar(0));
    for (int y = -radius; y <= radius; ++y)
        for (int x = -radius; x <= radius; ++x)
            if (x * x + y * y <= radius * radius) disc.at<unsigned char>(y + radius, x + radius) = 1;
    return disc;
}

void Apply(SettingsEffectMorphology::Operation operation, cv::Mat& picture, cv::Mat const& disc, int iterations) {
    using S = SettingsEffectMorphology;
    auto const erode = [&] { cv::erode(picture, picture, disc, {-1, -1}, iterations); };
    auto const dilate = [&] { cv::dilate(picture, picture, disc, {-1, -1}, iterations); };
    bool const opens = operation == S::OPEN || operation == S::SMOOTH;
    bool const closes = operation == S::CLOSE || operation == S::SMOOTH;
    if (operation == S::ERODE || opens) erode();
    if (operation == S::DILATE || opens || closes) dilate();
    if (opens && closes) dilate();
    if (closes) erode();
}

} // namespace

class Morphology : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectMorphology> {
public:
    Morphology(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSC(effectFactory, effectContext, ImplNames::DEFAULT) {}

    bool ConvertBack() const override { return true; }

    std::vector<PixFmt> const& GetSupportedFormats() const override {
        static std::vector<PixFmt> const formats{PixFmt::GRAY8, PixFmt::RGB24, PixFmt::BGR24, PixFmt::RGBA};
        return formats;
    }

    void ProcessInternalCSC(intrusive_ptr<IData>& data) override {
        RequireSettings();
        WithOpenCV("morphology", [&] {
            IDataVideo& picture = AsVideo(data);
            VideoHandle const result = picture.MakeCopy(CopyMode::Value);
            cv::Mat samples = AsMat(result->GetMutablePlane(0));
            Apply(settings.GetOperation(), samples, MakeDisc(settings.GetRadius()), settings.GetIterations());
            if (picture.GetDescription().hasAlpha) {
                int const alpha[] = {3, 3};
                cv::Mat const before = AsMat(std::as_const(picture).GetPlane(0));
                cv::mixChannels(&before, 1, &samples, 1, alpha, 1);
            }
            data = result;
        });
    }

private:
    void RequireSettings() const {
        constexpr int MAX_RADIUS = 100;
        auto const refuse = [](std::string const& what, int value, std::string const& accepted) {
            VELNOR_THROW(EffectException, "The " + what + " of the morphology effect is " + std::to_string(value) +
                                              "; " + accepted + " are possible.");
        };
        int const operation = settings.GetOperation();
        if (operation < SettingsEffectMorphology::ERODE || operation > SettingsEffectMorphology::SMOOTH)
            refuse("operation", operation, "0 to 4");
        if (settings.GetRadius() < 0 || settings.GetRadius() > MAX_RADIUS)
            refuse("radius", settings.GetRadius(), "0 to 100");
        if (settings.GetIterations() < 0 || settings.GetIterations() > MAX_RADIUS)
            refuse("number of iterations", settings.GetIterations(), "0 to 100");
    }
};

intrusive_ptr<IEffect> CreateMorphology(FactoryHandle const& factory, ContextHandle const& context) {
    return MakeEffect<Morphology>(factory, context);
}

} // namespace Velnor::Proc
