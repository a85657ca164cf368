// Inversion: turns colours into their opposites, through one table for red, green and blue.
#include "SettingsEffectInversion.h"

#include "Proc/Effects/Kit/ByteTables.h"
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Effects/Kit/PackedFormats.h"

namespace Velnor::Proc {

class Inversion : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectInversion> {
public:
    using EffectBaseCSC::EffectBaseCSC;

    bool ConvertBack() const override { return true; }
    std::vector<PixFmt> const& GetSupportedFormats() const override { return Kernels::PackedRgbFormats(); }

    void ProcessInternalCSC(DataHandle& data) override {
        Kernels::Table table;
        for (int level = 0; level < 256; ++level)
            table[static_cast<std::size_t>(level)] =
                static_cast<unsigned char>(settings.GetWhite() * (255 - level) / 255);
        std::array const tables{table, table, table};
        MutablePlane const plane = OwnPicture(data).GetMutablePlane(0);
        Kernels::MapBytes(plane, plane, tables, Kernels::PackedRgb(data->GetPixFmt()).pixelBytes);
    }
};

VELNOR_EFFECT(SettingsEffectInversion, OneInput, Inversion)

} // namespace Velnor::Proc
