// BalanceLuma: lifts dark regions and holds back bright ones. What is inside a region keeps its contrast, since a whole
// region is brightened or darkened by one factor; regions end at edges, so there are no halos.
//
//     map    = edge-preserving smooth luma
//     factor = by the map's level: up to 2.6 stops for black, down to 0.6 stops for white, 1 in between
//     pixel  = pixel * factor      the same for all three components: hue stays
//                                  a brightened pixel's largest component nears 255 and never passes it
#include "Proc/Effects/Kit/ClearColours.h"
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Effects/Lumetta/Kernels/Luma/LumaMap.h"
#include "Proc/Settings/SettingsEffectBalanceLuma.h"

#include <algorithm>
#include <cmath>

namespace Velnor::Proc {
namespace {

double Share(double percent) { return std::isfinite(percent) ? std::clamp(percent / 100.0, 0.0, 1.0) : 0.0; }

/// Factors by the level of the map, in equal steps from 0 to 1.
class FactorTable {
public:
    FactorTable(double shadows, double highlights) : factors(STEPS + 1) {
        for (std::size_t i = 0; i <= STEPS; ++i) {
            double const level = static_cast<double>(i) / STEPS;
            double const dark = std::max(0.0, 1 - level / SHADOWS_END);
            double const bright = std::max(0.0, (level - HIGHLIGHTS_BEGIN) / (1 - HIGHLIGHTS_BEGIN));
            double const stops =
                MOST_LIFT * shadows * dark * std::sqrt(dark) - MOST_HOLD * highlights * bright * bright;
            factors[i] = static_cast<float>(std::exp2(stops / GAMMA));
        }
    }

    float operator()(float level) const {
        return factors[static_cast<std::size_t>(std::clamp(level, 0.0F, 1.0F) * STEPS + 0.5F)];
    }

private:
    static constexpr std::size_t STEPS = 4096;
    static constexpr double SHADOWS_END = 0.6;
    static constexpr double HIGHLIGHTS_BEGIN = 0.45;
    static constexpr double MOST_LIFT = 2.6; ///< Stops.
    static constexpr double MOST_HOLD = 0.6; ///< Stops: as much as keeps brighter regions brighter.
    static constexpr double GAMMA = 2.2;     ///< Samples are about this root of light.

    std::vector<float> factors;
};

template <std::size_t PixelBytes>
void ScaleRow(unsigned char* pixel, std::uint64_t count, float const* factors) {
    for (std::uint64_t x = 0; x < count; ++x, pixel += PixelBytes) {
        auto const largest = static_cast<float>(std::max({pixel[0], pixel[1], pixel[2]})) / 255.0F;
        float const lift = std::max(factors[x] - 1, 0.0F);
        float const factor = factors[x] / (1 + lift * largest);
        for (std::size_t k = 0; k < 3; ++k)
            pixel[k] = static_cast<unsigned char>(std::min(static_cast<float>(pixel[k]) * factor + 0.5F, 255.0F));
    }
}

} // namespace

class BalanceLuma : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectBalanceLuma> {
public:
    using EffectBaseCSC::EffectBaseCSC;

    bool ConvertBack() const override { return true; }
    std::vector<PixFmt> const& GetSupportedFormats() const override { return Kernels::PackedRgbFormats(); }

    void ProcessInternalCSC(DataHandle& data) override {
        FactorTable const table(Share(settings.GetShadows()), Share(settings.GetHighlights()));
        Kernels::PackedRgb const format(data->GetPixFmt());
        FrameFormat const frame = data->GetFrameFormat();
        double const side = std::max(frame.width, frame.height);
        Kernels::LumaMap map(CopyCovered(AsVideo(data))->GetPlane(0), format, Share(settings.GetRadius()) * side,
                             EDGE_CONTRAST);
        MutablePlane const plane = AsVideo(data).GetMutablePlane(0);
        std::vector<float> luma(frame.width);
        std::vector<float> factors(frame.width);
        for (std::uint32_t y = 0; y < frame.height; ++y) {
            unsigned char* const row = plane.GetRow(y);
            Kernels::ReadLumaRow(row, frame.width, format, luma.data());
            map.SmoothRow(y, luma.data(), factors.data());
            for (float& level : factors) level = table(level);
            if (format.pixelBytes == 3)
                ScaleRow<3>(row, frame.width, factors.data());
            else
                ScaleRow<4>(row, frame.width, factors.data());
        }
    }

private:
    static constexpr double EDGE_CONTRAST = 0.06; ///< Fainter edges are texture, which a region keeps whole.
};

VELNOR_EFFECT(SettingsEffectBalanceLuma, OneInput, BalanceLuma)

} // namespace Velnor::Proc
