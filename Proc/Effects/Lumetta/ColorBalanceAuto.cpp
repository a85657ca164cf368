// ColorBalanceAuto: stretches components and luma by the picture's own histograms, and sets the exposure.
//
//     clip points = ends of the histograms      of the components; with light balance also of the luma, softened
//     tables      = white balance, light balance, exposure, each applied after the one before
//     picture     = new picture through the tables
//
// With both balances on, the white balance works on the light balance's clip points too, so one reading of the picture
// serves both.
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Effects/Kit/PackedFormats.h"
#include "Proc/Effects/Lumetta/Kernels/Tables/LevelTables.h"
#include "Proc/Settings/SettingsEffectColorBalanceAuto.h"

#include <cmath>

namespace Velnor::Proc {
namespace {

using Kernels::ClipPair;
using Kernels::Table;
using Kernels::Then;

constexpr std::size_t LUMA = 3;
using ClipPairs = std::array<ClipPair, 4>; ///< Of the pixel's bytes 0, 1, 2 and, for the light balance, the luma.
using Tables = std::array<Table, 3>;

/// The product is 32-bit on purpose: thresholds of larger pictures follow the wrapped count.
std::uint32_t PixelCount(FrameFormat const& frame) { return frame.width * frame.height; }

ClipPairs MeasureWhite(ConstPlane const& plane, Kernels::PackedRgb const& format, double pixels) {
    auto const lowCount = static_cast<std::uint64_t>(pixels * 10.0 / 100.0);
    auto const highCount = static_cast<std::uint64_t>(pixels / 100.0);
    Kernels::LumaWeights const weights = Kernels::WeightsByByte(format.isBlueFirst);
    auto const histograms = Kernels::CountBytes(plane, format.pixelBytes);
    ClipPairs pairs;
    for (std::size_t k = 0; k < histograms.size(); ++k)
        pairs[k] = Kernels::FindClipPair(histograms[k], lowCount / weights[k], highCount / weights[k]);
    return pairs;
}

ClipPairs MeasureLight(ConstPlane const& plane, Kernels::PackedRgb const& format, double pixels) {
    auto const count = static_cast<std::uint64_t>(pixels * 0.005);
    auto const histograms =
        Kernels::CountBytesAndLuma(plane, format.pixelBytes, Kernels::WeightsByByte(format.isBlueFirst));
    ClipPairs pairs;
    for (std::size_t k = 0; k < pairs.size(); ++k)
        pairs[k] = Kernels::Soften(Kernels::FindClipPair(histograms[k], count, count));
    return pairs;
}

void BalanceWhite(Tables& tables, ClipPairs const& pairs) {
    for (std::size_t k = 0; k < tables.size(); ++k) tables[k] = Then(tables[k], Kernels::StretchTable(pairs[k]));
}

/// Component stretch, gamma, luma stretch, gamma again.
void BalanceLight(Tables& tables, ClipPairs const& pairs) {
    double const root = 1.0 / std::sqrt(10.0) + 0.7036920932599899;
    Table const gamma = Kernels::PowerTable(root * root);
    Table const luma = Then(Kernels::StretchTable(pairs[LUMA]), gamma);
    for (std::size_t k = 0; k < tables.size(); ++k)
        tables[k] = Then(tables[k], Then(Then(Kernels::StretchTable(pairs[k]), gamma), luma));
}

} // namespace

class ColorBalanceAuto : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectColorBalanceAuto> {
public:
    using EffectBaseCSC::EffectBaseCSC;

    bool ConvertBack() const override { return true; }
    std::vector<PixFmt> const& GetSupportedFormats() const override { return Kernels::PackedRgbFormats(); }

    void ProcessInternalCSC(DataHandle& data) override {
        Kernels::PackedRgb const format(data->GetPixFmt());
        Tables const tables = BuildTables(AsVideo(data), format);
        MutablePlane const plane = ReplacePicture(data).GetMutablePlane(0);
        Kernels::MapBytes(plane, plane, tables, format.pixelBytes);
    }

private:
    Tables BuildTables(IDataVideo const& picture, Kernels::PackedRgb const& format) const {
        ConstPlane const plane = picture.GetPlane(0);
        double const pixels = PixelCount(picture.GetFrameFormat());
        Tables tables;
        tables.fill(Kernels::IdentityTable());
        ClipPairs pairs;
        if (settings.GetLightBalance())
            pairs = MeasureLight(plane, format, pixels);
        else if (settings.GetWhiteBalance())
            pairs = MeasureWhite(plane, format, pixels);
        if (settings.GetWhiteBalance()) BalanceWhite(tables, pairs);
        if (settings.GetLightBalance()) BalanceLight(tables, pairs);
        if (settings.GetExposure() != 0)
            for (Table& table : tables) table = Then(table, Kernels::ExposureTable(settings.GetExposure()));
        return tables;
    }
};

VELNOR_EFFECT(SettingsEffectColorBalanceAuto, OneInput, ColorBalanceAuto)

} // namespace Velnor::Proc
