// ReplaceChroma: gives what has the key colour the hue and saturation of the new one, in light and shade alike.
//
//     chromaticity = (a / L, b / L) of OKLab            the same all over an evenly coloured thing, however it is lit
//     share        = 1 within the tolerance of the key's, fading to 0 over the softness
//     result       = new colour's + what the pixel's differs from the key's, turned along with the hue; luma as it was
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Effects/Lumetta/Kernels/Color/ColorCube.h"
#include "Proc/Settings/SettingsEffectReplaceChroma.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <optional>

namespace Velnor::Proc {
namespace {

using Chromaticity = std::complex<float>;
using Kernels::Lab;
using Kernels::RgbLevels;

Chromaticity ChromaticityOf(Lab const& lab) {
    if (lab.l <= 0) return {};
    return {lab.a / lab.l, lab.b / lab.l};
}

Chromaticity ChromaticityOf(Color const& color) {
    return ChromaticityOf(Kernels::ToOkLab({static_cast<float>(color.GetRed()), static_cast<float>(color.GetGreen()),
                                            static_cast<float>(color.GetBlue())}));
}

/// 0 up to `low`, 1 from `high` on, smooth between.
float SmoothStep(float low, float high, float value) {
    if (value <= low) return 0;
    if (value >= high) return 1;
    float const t = (value - low) / (high - low);
    return t * t * (3 - 2 * t);
}

class ChromaChange {
public:
    explicit ChromaChange(SettingsEffectReplaceChroma const& settings)
        : key(ChromaticityOf(settings.GetKeyColor())),
          target(ChromaticityOf(settings.GetNewColor())),
          turn(Turn(key, target)),
          inner(FULL_RANGE * Share(settings.GetTolerance())),
          outer(inner + FULL_RANGE * Share(settings.GetSoftness())),
          strength(Share(settings.GetStrength())) {}

    RgbLevels operator()(RgbLevels const& rgb) const {
        Lab lab = Kernels::ToOkLab(rgb);
        Chromaticity const own = ChromaticityOf(lab);
        // Near black the chromaticity is noise.
        float const share =
            strength * (1 - SmoothStep(inner, outer, DistanceFromKey(own))) * SmoothStep(0.08F, 0.25F, lab.l);
        if (share <= 0) return rgb;
        Chromaticity const next = own + share * (target + turn * (own - key) - own);
        lab.a = next.real() * lab.l;
        lab.b = next.imag() * lab.l;
        return Kernels::WithLuma(Kernels::FromOkLab(lab), Kernels::LumaOf(rgb));
    }

private:
    static constexpr float FULL_RANGE = 0.35F; ///< Distance at 100 %: nearly from pure red to grey.
    static constexpr float NEUTRAL = 0.02F;    ///< Chromaticity below which a colour has no hue to speak of.
    static constexpr float MOST_GAIN = 1.5F;   ///< Of differences: more would bring out the noise of weak colours.

    static float Share(double percent) {
        return std::isfinite(percent) ? static_cast<float>(std::clamp(percent, 0.0, 100.0) / 100.0) : 0.0F;
    }

    /// Folds and shadows of a coloured thing are of its hue and more saturated, since light reaches them from itself:
    /// that way lies half as far.
    float DistanceFromKey(Chromaticity own) const {
        Chromaticity const away = own - key;
        if (std::abs(key) < NEUTRAL) return std::abs(away);
        Chromaticity const turned = away * std::conj(key) / std::abs(key);
        return std::hypot(turned.real() > 0 ? 0.5F * turned.real() : turned.real(), turned.imag());
    }

    static Chromaticity Turn(Chromaticity from, Chromaticity to) {
        if (std::abs(from) < NEUTRAL) return 1;
        float const gain = std::min(std::abs(to) / std::abs(from), MOST_GAIN);
        if (std::abs(to) < NEUTRAL) return gain;
        return std::polar(gain, std::arg(to) - std::arg(from));
    }

    Chromaticity key, target, turn;
    float inner, outer, strength;
};

} // namespace

class ReplaceChroma : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectReplaceChroma> {
public:
    using EffectBaseCSC::EffectBaseCSC;

    void ResetSettings() override {
        cube.reset();
        EffectBaseCSC::ResetSettings();
    }

    bool ConvertBack() const override { return true; }
    std::vector<PixFmt> const& GetSupportedFormats() const override { return Kernels::PackedRgbFormats(); }

    void ProcessInternalCSC(DataHandle& data) override {
        if (!cube) cube.emplace(FINE_STEP, ChromaChange(settings));
        cube->Apply(AsVideo(data).GetMutablePlane(0), Kernels::PackedRgb(data->GetPixFmt()));
    }

private:
    static constexpr unsigned int FINE_STEP = 2; ///< 4 levels: a narrow softness is a steep change.

    std::optional<Kernels::ColorCube> cube; ///< Of the settings as they are.
};

VELNOR_EFFECT(SettingsEffectReplaceChroma, OneInput, ReplaceChroma)

} // namespace Velnor::Proc
