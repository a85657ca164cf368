// AutoGlareRemove: specular glare is white light on a surface: bright, of little colour, and brighter than its
// surroundings over a small area only, which a white wall or the sky is not.
//
//     excess = luma - luma blurred over the largest size of a spot
//     glare  = [luma above the threshold] * [little saturation] * [excess]      each a soft step
//
// The mask grows a little, since a spot fades out, and its pixels are rebuilt from around by pull-push interpolation.
#include "Proc/Effects/Kit/ClearColours.h"
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Effects/Kit/PackedFormats.h"
#include "Proc/Effects/Kit/PullPush.h"
#include "Proc/Settings/SettingsEffectAutoGlareRemove.h"
#include "Proc/Settings/SettingsEffectBlur.h"
#include "Proc/Settings/SettingsEffectMorphology.h"

#include <algorithm>
#include <cmath>

namespace Velnor::Proc {
namespace {

/// 0 up to `low`, 1 from `high` on, smooth between.
float SoftStep(float value, float low, float high) {
    float const t = std::clamp((value - low) / (high - low), 0.0F, 1.0F);
    return t * t * (3 - 2 * t);
}

/// Writes how much of each pixel is glare, 0 to 255, over the blurred luma.
void FindGlare(ConstPlane const& pixels, std::size_t pixelBytes, ConstPlane const& luma, MutablePlane const& blurred,
               float threshold) {
    constexpr float SOFTNESS = 25; // Levels.
    for (std::uint64_t y = 0; y < luma.GetHeight(); ++y) {
        unsigned char const* pixel = pixels.GetRow(y);
        unsigned char const* const own = luma.GetRow(y);
        unsigned char* const to = blurred.GetRow(y);
        for (std::uint64_t x = 0; x < luma.GetWidth(); ++x, pixel += pixelBytes) {
            auto const [low, high] = std::minmax({pixel[0], pixel[1], pixel[2]});
            float const saturation = static_cast<float>(high - low) / static_cast<float>(std::max<int>(high, 1));
            float const bright = SoftStep(own[x], threshold - SOFTNESS, threshold);
            float const pale = 1 - SoftStep(saturation, 0.25F, 0.45F);
            float const excess = SoftStep(static_cast<float>(own[x] - to[x]), SOFTNESS, 2 * SOFTNESS);
            to[x] = static_cast<unsigned char>(255 * bright * pale * excess + 0.5F);
        }
    }
}

/// From shares of glare to weights of the pixels.
void Invert(MutablePlane const& mask, float strength) {
    for (std::uint64_t y = 0; y < mask.GetHeight(); ++y) {
        unsigned char* const row = mask.GetRow(y);
        for (std::uint64_t x = 0; x < mask.GetWidth(); ++x)
            row[x] = static_cast<unsigned char>(255 - strength * static_cast<float>(row[x]));
    }
}

} // namespace

class AutoGlareRemove : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectAutoGlareRemove> {
public:
    AutoGlareRemove(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSC(effectFactory, effectContext),
          blur(MakeOneInput(SettingsEffectBlur())),
          grow(MakeOneInput(SettingsEffectMorphology())),
          toGrey(MakeOneInput(SettingsColorspaceConverter(PixFmt::GRAY8, false))) {}

    bool ConvertBack() const override { return true; }
    std::vector<PixFmt> const& GetSupportedFormats() const override { return Kernels::PackedRgbFormats(); }

    void ProcessInternalCSC(DataHandle& data) override {
        unsigned int const pixelBytes = Kernels::PackedRgb(data->GetPixFmt()).pixelBytes;
        FrameFormat const frame = AsVideo(data).GetFrameFormat();
        double const side = std::min(frame.width, frame.height);

        VideoHandle const result = AsVideo(data).MakeCopy(CopyMode::Independent);
        CoverClearPixels(*result);
        DataHandle luma = result->MakeCopy(CopyMode::Share);
        toGrey->ProcessData(luma);
        DataHandle mask = AsVideo(luma).MakeCopy(CopyMode::Share);
        Blur(mask, settings.GetSize() / 100 * side);
        FindGlare(result->GetPlane(0), pixelBytes, AsVideo(luma).GetPlane(0), AsVideo(mask).GetMutablePlane(0),
                  static_cast<float>(settings.GetThreshold() * 2.55));
        Grow(mask, std::clamp(static_cast<int>(side / 150), 2, 30));
        Invert(AsVideo(mask).GetMutablePlane(0), static_cast<float>(settings.GetStrength() / 100));
        MutablePlane const pixels = result->GetMutablePlane(0);
        Kernels::FillHoles(pixels, pixelBytes, AsVideo(mask).GetPlane(0), FindClearAlpha(*result));
        data = result;
    }

private:
    void Blur(DataHandle& picture, double deviation) {
        RunWith(*blur, SettingsEffectBlur(SettingsEffectBlur::GAUSSIAN).SetDevX(deviation).SetDevY(deviation), picture);
    }

    void Grow(DataHandle& mask, int radius) {
        RunWith(*grow, SettingsEffectMorphology(SettingsEffectMorphology::DILATE, radius), mask);
        Blur(mask, radius * 0.4); // So little that the spot itself is still wholly covered.
    }

    intrusive_ptr<IOneInputEffectVideo> blur;
    intrusive_ptr<IOneInputEffectVideo> grow;
    intrusive_ptr<IOneInputEffectVideo> toGrey;
};

VELNOR_EFFECT(SettingsEffectAutoGlareRemove, OneInput, AutoGlareRemove)

} // namespace Velnor::Proc
