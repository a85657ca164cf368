// A plug-in by somebody else, with settings of its own, on nothing but what is installed.
#include "Proc/Effects/Kit/ByteTables.h"
#include "Proc/Effects/Kit/PackedFormats.h"
#include "Proc/Effects/Lumetta/EffectBaseCSC.h"
#include "Proc/Interfaces/DefineSettings.h"
#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

class SettingsEffectInversion final : public SettingsOf<SettingsEffectInversion> {
    VELNOR_SETTINGS(SettingsEffectInversion, "Turns colours into their opposites.")
    VELNOR_FIELD(int, White, 255, "what black becomes", Range(0, 255))
    VELNOR_SETTINGS_END
};
VELNOR_DEFINE_SETTINGS(SettingsEffectInversion)

class Inversion : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectInversion> {
public:
    using EffectBaseCSC::EffectBaseCSC;

    bool ConvertBack() const override { return true; }
    std::vector<PixFmt> const& GetSupportedFormats() const override { return Kernels::PackedRgbFormats(); }

    void ProcessInternalCSC(intrusive_ptr<IData>& data) override {
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

void Registrator(Velnor::Proc::IEffectRegistry* registry) {
    using namespace Velnor::Proc;
    RegisterEffects(*registry, ImplNames::VELNOR, {InversionEntry()});
}
