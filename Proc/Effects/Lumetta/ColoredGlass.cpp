// ColoredGlass: panes of one colour each, in lead. The panes follow the edges of the picture as closely as is asked
// for.
#include "Proc/Effects/Kit/ClearColours.h"
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Effects/Kit/PackedFormats.h"
#include "Proc/Effects/Lumetta/Kernels/Style/GlassCells.h"
#include "Proc/Interfaces/LumaShare.h"
#include "Proc/Settings/SettingsEffectColoredGlass.h"

#include <algorithm>
#include <array>

namespace Velnor::Proc {
namespace {

using Bytes = std::array<unsigned char, 3>;

/// Farther from grey of the same luma by `factor`; bytes in the order of the pixel.
Bytes Saturate(Bytes const& colour, double factor, bool isBlueFirst) {
    double const red = colour[isBlueFirst ? 2 : 0];
    double const blue = colour[isBlueFirst ? 0 : 2];
    using Share = LumaShare<double>;
    double const luma = Share::RED * red + Share::GREEN * colour[1] + Share::BLUE * blue;
    Bytes result{};
    for (std::size_t k = 0; k < 3; ++k)
        result[k] = static_cast<unsigned char>(std::clamp(luma + factor * (colour[k] - luma), 0.0, 255.0) + 0.5);
    return result;
}

/// How much of a pixel at a distance (in thirds of a pixel) from a border is lead, 0 to 255.
int LeadShare(float width, std::uint16_t distance) {
    if (width < 0.01F) return 0;
    float const share = std::clamp(width / 2 + 0.5F - static_cast<float>(distance) / 3, 0.0F, 1.0F);
    return static_cast<int>(share * 255 + 0.5F);
}

} // namespace

class ColoredGlass : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectColoredGlass> {
public:
    using EffectBaseOneInput::EffectBaseOneInput;

    void ProcessInternal(DataHandle& data) override {
        std::vector<PixFmt> const& formats = Kernels::PackedRgbFormats();
        if (std::ranges::find(formats, data->GetPixFmt()) == formats.end())
            VELNOR_THROW(FilterException, "Pixel format is not supported!");
        VideoHandle const result = AsVideo(data).MakeCopy(CopyMode::Independent);
        CoverClearPixels(*result);
        Draw(*result, Kernels::PackedRgb(data->GetPixFmt()));
        data = result;
    }

private:
    void Draw(IDataVideo& picture, Kernels::PackedRgb const& format) const {
        FrameFormat const frame = picture.GetFrameFormat();
        double const side = std::max(2.0, settings.GetCellSize() / 100 * std::min(frame.width, frame.height));
        MutablePlane const plane = picture.GetMutablePlane(0);
        Kernels::GlassCells cells =
            Kernels::FindCells(plane, format.pixelBytes, {side, settings.GetEdgeAwareness() / 100, settings.GetSeed()});
        for (Bytes& colour : cells.colours)
            colour = Saturate(colour, settings.GetSaturation() / 100, format.isBlueFirst);
        std::vector<std::uint16_t> const distances = Kernels::FindBorderDistances(cells);
        auto const leadPart = static_cast<float>(settings.GetLeadWidth() / 100);
        Color const color = settings.GetLeadColor();
        auto const leadRgb = format.isBlueFirst ? color.bgra() : color.rgba();
        std::size_t at = 0;
        for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) {
            unsigned char* to = plane.GetRow(y);
            for (std::uint32_t x = 0; x < frame.width; ++x, to += format.pixelBytes, ++at) {
                Bytes const& glass = cells.colours[cells.labels[at]];
                int const share = LeadShare(leadPart * cells.sides[cells.labels[at]], distances[at]);
                for (std::size_t k = 0; k < 3; ++k) {
                    int const metal = static_cast<int>(leadRgb >> (8 * k) & 0xffU);
                    to[k] = static_cast<unsigned char>((share * metal + (255 - share) * glass[k] + 127) / 255);
                }
            }
        }
    }
};

VELNOR_EFFECT(SettingsEffectColoredGlass, OneInput, ColoredGlass)

} // namespace Velnor::Proc
