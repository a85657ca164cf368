// Gradient: colours a picture by its grey level. Grey levels become palette indices, the gradient the palette; the base
// then puts the picture's own brightness under the gradient's colours.
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Effects/Lumetta/Kernels/Tables/GradientTable.h"
#include "Proc/Settings/SettingsEffectGradient.h"

namespace Velnor::Proc {

class Gradient : public EffectBaseCSCLuma<IOneInputEffectVideo, SettingsEffectGradient> {
public:
    Gradient(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSCLuma(effectFactory, effectContext), table(Kernels::GradientTable(settings.GetStops())) {}

    using EffectBaseCSCLuma::SetSettings;

    void SetSettings(SettingsEffectGradient const& next) override {
        if (settings == next) return;
        RequireAccepted(next);
        EffectBaseCSCLuma::SetSettings(next);
        table = Kernels::GradientTable(settings.GetStops());
    }

    bool ConvertBack() const override { return true; }

    std::vector<PixFmt> const& GetSupportedFormats() const override {
        static std::vector<PixFmt> const formats{PixFmt::GRAY8};
        return formats;
    }

    void ProcessInternalColor(DataHandle& data) override {
        VideoHandle const result = context->CreateImage(PixFmt::PAL8, data->GetFrameFormat());
        CopyPlane(AsVideo(data).GetPlane(0), result->GetMutablePlane(0));
        CopyPlane(ConstPlane(table.data(), static_cast<std::int64_t>(table.size()), table.size(), 1),
                  result->GetMutablePlane(1));
        data = result;
    }

private:
    Kernels::PaletteTable table;
};

VELNOR_EFFECT(SettingsEffectGradient, OneInput, Gradient)

} // namespace Velnor::Proc
