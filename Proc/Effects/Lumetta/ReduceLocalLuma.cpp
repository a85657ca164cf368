// ReduceLocalLuma: burns (or dodges) the picture where the second one, a mask, is bright: a burn on paper, as light is.
//
//     mask  -> grey, its edge softened
//     pixel =  pixel * factor[mask][luma of the pixel]    exposure in linear light; a dodge bends off below white
//                                                         one for all three components: hue and saturation stay
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Effects/Kit/PackedFormats.h"
#include "Proc/Effects/Kit/RequirePictures.h"
#include "Proc/Effects/Lumetta/Kernels/Blur/BoxMean.h"
#include "Proc/Effects/Lumetta/Kernels/Luma/LumaRow.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectReduceLocalLuma.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace Velnor::Proc {
namespace {

using Tones = SettingsEffectReduceLocalLuma::Tones;

constexpr double MOST_STOPS = 2.0;
constexpr double GAMMA = 2.2;

double WeightOf(Tones tones, double level) {
    if (tones == Tones::SHADOWS) return 1 - level;
    return tones == Tones::HIGHLIGHTS ? level : 1;
}

/// By what samples are multiplied, by the luma of their pixel.
using Factors = std::array<float, 256>;

/// The factors of `stops` of exposure, weighted by tone.
Factors ExposeBy(double stops, Tones tones) {
    Factors factors{};
    for (std::size_t i = 0; i < factors.size(); ++i) {
        double const level = static_cast<double>(i) / 255.0;
        double const gain = std::exp2(stops * WeightOf(tones, level));
        double const bend = 1 + std::max(gain - 1, 0.0) * std::pow(level, GAMMA);
        factors[i] = static_cast<float>(std::pow(gain / bend, 1 / GAMMA));
    }
    return factors;
}

/// Three means of a box: close to a Gaussian, at a cost that does not depend on its width.
void Soften(MutablePlane const& mask, std::size_t radius) {
    if (radius == 0) return;
    Kernels::FloatPlane plane(mask.GetWidth(), mask.GetHeight());
    Kernels::FloatPlane scratch(mask.GetWidth(), mask.GetHeight());
    for (std::uint64_t y = 0; y < mask.GetHeight(); ++y) std::copy_n(mask.GetRow(y), plane.width, plane.GetRow(y));
    for (int pass = 0; pass < 3; ++pass) Kernels::BoxMean(plane, radius, scratch);
    for (std::uint64_t y = 0; y < mask.GetHeight(); ++y)
        std::transform(plane.GetRow(y), plane.GetRow(y) + plane.width, mask.GetRow(y),
                       [](float value) { return static_cast<unsigned char>(value + 0.5F); });
}

} // namespace

class ReduceLocalLuma : public EffectBaseTwoInput<ITwoInputEffectVideo, SettingsEffectReduceLocalLuma> {
public:
    ReduceLocalLuma(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseTwoInput(effectFactory, effectContext),
          maskConverter(MakeOneInput(SettingsColorspaceConverter(PixFmt::GRAY8, true))),
          workConverter(MakeOneInput(SettingsColorspaceConverter(Kernels::PackedRgbFormats(), true))),
          backConverter(MakeOneInput(SettingsColorspaceConverter())) {}

    void ResetSettings() override {
        factors.clear();
        EffectBaseTwoInput::ResetSettings();
    }

    void ProcessInternal(DataHandle& first, ConstDataHandle const& second) override {
        RequireOneSize("The mask is", second->GetFrameFormat(), first->GetFrameFormat());
        MakeFactors();
        DataHandle const mask = MakeMask(AsVideo(second));
        PixFmt const format = first->GetPixFmt();
        backConverter->SetSettings(SettingsColorspaceConverter(format, true));
        workConverter->ProcessData(first);
        Expose(AsVideo(first), AsVideo(mask).GetPlane(0));
        if (first->GetPixFmt() != format) backConverter->ProcessData(first);
    }

private:
    void MakeFactors() {
        if (!factors.empty()) return;
        double const percent = settings.GetStrength();
        double const strength = std::isfinite(percent) ? std::clamp(percent / 100.0, -1.0, 1.0) : 0.0;
        std::vector<Factors> made;
        for (int mask = 0; mask < 256; ++mask)
            made.push_back(ExposeBy(-MOST_STOPS * strength * mask / 255.0, settings.GetTones()));
        factors = std::move(made);
    }

    DataHandle MakeMask(IDataVideo const& given) {
        DataHandle mask = given.MakeCopy(CopyMode::Share);
        maskConverter->ProcessData(mask);
        FrameFormat const frame = mask->GetFrameFormat();
        double const percent = settings.GetFeather();
        double const share = std::isfinite(percent) ? std::clamp(percent / 100.0, 0.0, 1.0) : 0.0;
        // A box of radius r spreads by r / sqrt(3); three of them by r.
        auto const radius = static_cast<std::size_t>(std::lround(share * std::min(frame.width, frame.height)));
        if (radius > 0) Soften(AsVideo(mask).GetMutablePlane(0), radius);
        return mask;
    }

    void Expose(IDataVideo& picture, ConstPlane const& mask) const {
        MutablePlane const plane = picture.GetMutablePlane(0);
        Kernels::PackedRgb const format(picture.GetPixFmt());
        std::vector<unsigned char> luma(mask.GetWidth());
        for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) {
            unsigned char* pixel = plane.GetRow(y);
            unsigned char const* const amounts = mask.GetRow(y);
            Kernels::WriteLumaRow(pixel, luma.size(), format.pixelBytes, Kernels::WeightsByByte(format.isBlueFirst),
                                  luma.data());
            for (std::uint64_t x = 0; x < mask.GetWidth(); ++x, pixel += format.pixelBytes) {
                // A colour is not as bright as its largest component, which must not pass white.
                auto const largest = static_cast<float>(std::max({pixel[0], pixel[1], pixel[2]}));
                float factor = factors[amounts[x]][luma[x]];
                if (factor * largest > 255) factor = 255 / largest;
                for (std::size_t k = 0; k < 3; ++k)
                    pixel[k] = static_cast<unsigned char>(static_cast<float>(pixel[k]) * factor + 0.5F);
            }
        }
    }

    intrusive_ptr<IOneInputEffectVideo> maskConverter;
    intrusive_ptr<IOneInputEffectVideo> workConverter;
    intrusive_ptr<IOneInputEffectVideo> backConverter;
    std::vector<Factors> factors; ///< By the mask's value; empty when the settings have changed.
};

VELNOR_EFFECT(SettingsEffectReduceLocalLuma, TwoInput, ReduceLocalLuma)

} // namespace Velnor::Proc
