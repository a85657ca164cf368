// BlackWhite: two colours, by a threshold on the grey level. The result is a palette picture and stays one.
#include "Proc/Effects/Kit/ByteTables.h"
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Settings/SettingsEffectBlackWhite.h"

#include <cmath>
#include <cstring>

namespace Velnor::Proc {
namespace {

/// Entry v is 1 from grey level threshold * 256 (rounded) on. Thresholds that name no level fall to the nearer end.
Kernels::Table ThresholdTable(double threshold) {
    double const level = std::round(threshold * 256.0);
    Kernels::Table table{};
    for (std::size_t i = 0; i < table.size(); ++i) table[i] = static_cast<double>(i) >= level ? 1 : 0;
    return table;
}

} // namespace

class BlackWhite : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectBlackWhite> {
public:
    BlackWhite(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSC(effectFactory, effectContext), table(ThresholdTable(settings.GetThreshold())) {}

    using EffectBaseCSC::SetSettings;

    void SetSettings(SettingsEffectBlackWhite const& next) override {
        EffectBaseCSC::SetSettings(next);
        table = ThresholdTable(settings.GetThreshold());
    }

    bool ConvertBack() const override { return false; }

    std::vector<PixFmt> const& GetSupportedFormats() const override {
        static std::vector<PixFmt> const formats{PixFmt::GRAY8};
        return formats;
    }

    void ProcessInternalCSC(DataHandle& data) override {
        VideoHandle const result = context->CreateImage(PixFmt::PAL8, data->GetFrameFormat());
        MutablePlane const palette = result->GetMutablePlane(1);
        unsigned int const colors[] = {settings.GetFirstColor().rgba(), settings.GetSecondColor().rgba()};
        std::memset(palette.GetData(), 0, palette.GetWidth());
        std::memcpy(palette.GetData(), colors, sizeof colors);
        Kernels::MapBytes(AsVideo(data).GetPlane(0), result->GetMutablePlane(0), {&table, 1}, 1);
        data = result;
    }

private:
    Kernels::Table table;
};

VELNOR_EFFECT(SettingsEffectBlackWhite, OneInput, BlackWhite)

} // namespace Velnor::Proc
