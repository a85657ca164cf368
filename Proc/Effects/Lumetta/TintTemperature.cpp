// TintTemperature: shifts red against blue (temperature) and green (tint); brightness stays as it was.
//
//     red + temperature, green + tint, blue - temperature      through three tables, kept until the next SetSettings
//     luma of the picture                                      put back by the base
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Effects/Kit/PackedFormats.h"
#include "Proc/Effects/Lumetta/Kernels/Tables/LevelTables.h"
#include "Proc/Settings/SettingsEffectTintTemperature.h"

namespace Velnor::Proc {

class TintTemperature : public EffectBaseCSCLuma<IOneInputEffectVideo, SettingsEffectTintTemperature> {
public:
    TintTemperature(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSCLuma(effectFactory, effectContext) {
        BuildTables();
    }

    using EffectBaseCSCLuma::SetSettings;

    void SetSettings(SettingsEffectTintTemperature const& next) override {
        EffectBaseCSCLuma::SetSettings(next);
        BuildTables();
    }

    bool ConvertBack() const override { return true; }
    std::vector<PixFmt> const& GetSupportedFormats() const override { return Kernels::PackedRgbFormats(); }

    void ProcessInternalColor(DataHandle& data) override {
        Kernels::PackedRgb const format(data->GetPixFmt());
        VideoHandle const result = AsVideo(data).MakeCopy(CopyMode::Independent);
        data = result; // Before it is written: nobody else may hold the samples, and then they need no copying.
        MutablePlane const plane = result->GetMutablePlane(0);
        std::array<Kernels::Table, 3> const tables{format.isBlueFirst ? cool : warm, tint,
                                                   format.isBlueFirst ? warm : cool};
        Kernels::MapBytes(plane, plane, tables, format.pixelBytes);
    }

private:
    void BuildTables() {
        warm = Kernels::OffsetTable(settings.GetTemperature());
        tint = Kernels::OffsetTable(settings.GetTint());
        cool = Kernels::OffsetTable(-static_cast<std::int64_t>(settings.GetTemperature()));
    }

    Kernels::Table warm{};
    Kernels::Table tint{};
    Kernels::Table cool{};
};

VELNOR_EFFECT(SettingsEffectTintTemperature, OneInput, TintTemperature)

} // namespace Velnor::Proc
