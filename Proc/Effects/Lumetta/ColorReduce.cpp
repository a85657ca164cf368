// ColorReduce: the picture in a few colours of its own.
//
//     colours of the picture -> palette (median cut, k-means) -> nearest entry of each pixel, its error spread or not
//
// As a palette picture: what is less than half opaque becomes one entry of its own, which is transparent. In the
// picture's own format the opacity of each pixel stays.
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Effects/Kit/PackedFormats.h"
#include "Proc/Effects/Lumetta/Kernels/Color/ColorCounts.h"
#include "Proc/Effects/Lumetta/Kernels/Color/ErrorDiffusion.h"
#include "Proc/Settings/SettingsEffectColorReduce.h"

#include <cstring>
#include <string>

namespace Velnor::Proc {

class ColorReduce : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectColorReduce> {
public:
    using EffectBaseCSC::EffectBaseCSC;

    bool ConvertBack() const override { return !settings.GetPalette(); }
    std::vector<PixFmt> const& GetSupportedFormats() const override { return Kernels::PackedRgbFormats(); }

    void ProcessInternalCSC(DataHandle& data) override {
        bool const hasAlpha = data->GetDescription().hasAlpha;
        Kernels::PackedRgb const format(data->GetPixFmt());
        Kernels::ColorCounts const counts = Kernels::CountColors(AsConst(data).GetPlane(0), format, hasAlpha);
        auto count = static_cast<std::size_t>(settings.GetColors());
        // The transparent entry is one of the colours.
        bool const keepsHole = settings.GetPalette() && counts.hasTransparent;
        if (keepsHole) --count;
        std::vector<Kernels::Lab> palette = Kernels::FindPalette(counts.colors, count, settings.GetRefinement());
        if (palette.empty()) palette.emplace_back(); // transparent all over
        Kernels::PaletteMap map(palette);
        if (settings.GetPalette())
            data = MakePalettePicture(AsConst(data), format, map, keepsHole);
        else
            Repaint(AsVideo(data).GetMutablePlane(0), format, map, hasAlpha ? 1 : 0);
    }

private:
    static IDataVideo const& AsConst(DataHandle const& data) { return AsVideo(data); }

    DataHandle MakePalettePicture(IDataVideo const& picture, Kernels::PackedRgb const& format, Kernels::PaletteMap& map,
                                  bool keepsHole) const {
        VideoHandle const result = context->CreateImage(PixFmt::PAL8, picture.GetFrameFormat());
        unsigned char* entry = result->GetMutablePlane(1).GetData();
        std::memset(entry, 0, result->GetMutablePlane(1).GetWidth()); // whose entry past the last colour is the hole
        for (std::size_t i = 0; i < map.GetCount(); ++i, entry += 4) {
            std::ranges::copy(map.GetEntry(i), entry);
            entry[3] = 255;
        }
        auto const hole = static_cast<unsigned char>(map.GetCount());
        std::uint32_t const width = picture.GetFrameFormat().width;
        Kernels::PaletteRows rows(map, width, settings.GetDither(), keepsHole ? Kernels::HALF_OPAQUE : 0);
        ConstPlane const source = picture.GetPlane(0);
        MutablePlane const target = result->GetMutablePlane(0);
        for (std::uint64_t y = 0; y < source.GetHeight(); ++y) {
            unsigned char* const indices = target.GetRow(y);
            unsigned char const* const pixels = source.GetRow(y);
            rows.MapRow(pixels, format, indices);
            if (!keepsHole) continue;
            for (std::uint32_t x = 0; x < width; ++x)
                if (pixels[std::size_t{x} * 4 + 3] < Kernels::HALF_OPAQUE) indices[x] = hole;
        }
        return result;
    }

    void Repaint(MutablePlane const& plane, Kernels::PackedRgb const& format, Kernels::PaletteMap& map,
                 unsigned int leastOpacity) const {
        std::uint64_t const width = plane.GetWidth() / format.pixelBytes;
        Kernels::PaletteRows rows(map, width, settings.GetDither(), leastOpacity);
        std::vector<unsigned char> indices(width);
        std::size_t const red = format.isBlueFirst ? 2 : 0;
        for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) {
            unsigned char* pixel = plane.GetRow(y);
            rows.MapRow(pixel, format, indices.data());
            for (unsigned char const index : indices) {
                auto const& entry = map.GetEntry(index);
                pixel[red] = entry[0];
                pixel[1] = entry[1];
                pixel[2 - red] = entry[2];
                pixel += format.pixelBytes;
            }
        }
    }
};

VELNOR_EFFECT(SettingsEffectColorReduce, OneInput, ColorReduce)

} // namespace Velnor::Proc
