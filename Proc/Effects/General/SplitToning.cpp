// SplitToning: tints the shadows with one colour and the highlights with another.
//
//     pixel + 4 w (1 - w) * ((1 - w) * shadow + w * highlight)       w = luma / 255
//     shadow, highlight = the tone less the grey of its luma, times its opacity / 255
//
// A tone less its own grey has no luma: brightness stays but for what is clamped (the split of a colour into luma and
// colour differences is that of ITU-R BT.601). The bell 4 w (1 - w) keeps black and white clean, as toned prints have
// them. A grey tone tints nothing.
#include "Proc/Effects/General/Kernels/ColorRows.h"
#include "Proc/Effects/General/PictureAccess.h"
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Interfaces/LumaShare.h"
#include "Proc/Settings/SettingsEffectSplitToning.h"

#include <cmath>

namespace Velnor::Proc {
namespace {

/// Blue, green, red: what a tone adds at full weight.
std::array<double, 3> TintOf(Color const& tone) {
    using Share = LumaShare<double>;
    double const luma = Share::BLUE * tone.GetBlue() + Share::GREEN * tone.GetGreen() + Share::RED * tone.GetRed();
    double const strength = tone.GetOpacity() / 255.0;
    return {(tone.GetBlue() - luma) * strength, (tone.GetGreen() - luma) * strength, (tone.GetRed() - luma) * strength};
}

Kernels::ToneTable MakeTones(Color const& shadowColor, Color const& highlightColor, bool isBlueFirst) {
    std::array<double, 3> const shadow = TintOf(shadowColor);
    std::array<double, 3> const highlight = TintOf(highlightColor);
    Kernels::ToneTable tones{};
    for (std::size_t luma = 0; luma < tones.size(); ++luma) {
        double const w = static_cast<double>(luma) / 255.0;
        for (std::size_t k = 0; k < 3; ++k) {
            double const tint = 4 * w * (1 - w) * ((1 - w) * shadow[k] + w * highlight[k]);
            tones[luma][isBlueFirst ? k : 2 - k] = static_cast<std::int16_t>(std::lround(tint));
        }
    }
    return tones;
}

} // namespace

class SplitToning : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectSplitToning> {
public:
    SplitToning(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSC(effectFactory, effectContext, ImplNames::DEFAULT) {}

    bool ConvertBack() const override { return true; }
    std::vector<PixFmt> const& GetSupportedFormats() const override { return Kernels::PackedRgbFormats(); }

    void ProcessInternalCSC(DataHandle& data) override {
        IDataVideo& picture = OwnPicture(data);
        Kernels::PackedRgb const format(picture.GetPixFmt());
        Kernels::AddTones(picture.GetMutablePlane(0), format,
                          MakeTones(settings.GetShadowColor(), settings.GetHighlightColor(), format.isBlueFirst));
    }
};

VELNOR_EFFECT(SettingsEffectSplitToning, OneInput, SplitToning)

} // namespace Velnor::Proc
