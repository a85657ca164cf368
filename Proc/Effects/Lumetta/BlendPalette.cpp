// BlendPalette: gives the first picture the colour palette of the second.
//
//     both pictures -> mean and covariance of their colours in OKLab -> the map that carries the one onto the other
//     first         =  its colours through the map, by as much as the strength says
//
// What sRGB does not hold loses chroma and keeps its lightness and hue.
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Effects/Lumetta/Kernels/Color/ColorCube.h"
#include "Proc/Effects/Lumetta/Kernels/Color/ColorTransfer.h"
#include "Proc/Settings/SettingsEffectBlendPalette.h"

#include <algorithm>
#include <cmath>

namespace Velnor::Proc {
namespace {

using Kernels::Lab;
using Kernels::RgbLevels;

void CheckFormat(IData const& picture) {
    if (std::ranges::count(Kernels::PackedRgbFormats(), picture.GetPixFmt()) == 0)
        VELNOR_THROW(EffectException, "Pixel format is not supported!");
}

Kernels::ColorCounts Count(IDataVideo const& picture) {
    return Kernels::CountColors(picture.GetPlane(0), Kernels::PackedRgb(picture.GetPixFmt()),
                                picture.GetDescription().hasAlpha);
}

} // namespace

class BlendPalette : public EffectBaseTwoInput<ITwoInputEffectVideo, SettingsEffectBlendPalette> {
public:
    using EffectBaseTwoInput::EffectBaseTwoInput;

    void ProcessInternal(DataHandle& first, ConstDataHandle const& second) override {
        CheckFormat(*first);
        CheckFormat(*second);
        double const percent = settings.GetStrength();
        float const strength = std::isfinite(percent) ? static_cast<float>(std::clamp(percent / 100.0, 0.0, 1.0)) : 0;
        Kernels::ColorCounts const own = Count(std::as_const(AsVideo(first)));
        Kernels::ColorCounts const palette = Count(AsVideo(second));
        // A picture that is transparent all over has no palette, to give or to change.
        if (strength == 0 || own.colors.empty() || palette.colors.empty()) return;

        Kernels::ColorTransfer const transfer(Kernels::MeasureSpread(own.colors),
                                              Kernels::MeasureSpread(palette.colors));
        bool const keepLuma = settings.GetKeepLuma();
        Kernels::ColorCube cube(WIDE_STEP, [&](RgbLevels const& rgb) -> RgbLevels {
            Lab const from = Kernels::ToOkLab(rgb);
            Lab const to = transfer(from);
            RgbLevels const result = Kernels::FromOkLab(
                Kernels::IntoGamut({from.l + strength * (to.l - from.l), from.a + strength * (to.a - from.a),
                                    from.b + strength * (to.b - from.b)}));
            return keepLuma ? Kernels::WithLuma(result, std::min(Kernels::LumaOf(rgb), 255.0F)) : result;
        });
        cube.Apply(AsVideo(first).GetMutablePlane(0), Kernels::PackedRgb(first->GetPixFmt()));
    }

private:
    static constexpr unsigned int WIDE_STEP = 3; ///< 8 levels: the map is smooth.
};

VELNOR_EFFECT(SettingsEffectBlendPalette, TwoInput, BlendPalette)

} // namespace Velnor::Proc
