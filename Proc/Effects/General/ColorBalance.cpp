// ColorBalance: gamma and brightness, through one table.
//
//     level = 255 * (level / 255) ^ (2 ^ (-gamma / 50)) + brightness, to the nearest, clamped
//
// Red, green and blue each go through the table, in the entries of a palette too; of a luma/chroma or grey picture the
// luma does. Alpha, chroma and bytes without a meaning stay.
#include "Proc/Effects/General/PictureAccess.h"
#include "Proc/Effects/Kit/ByteTables.h"
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Settings/SettingsEffectColorBalance.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Velnor::Proc {
namespace {

Kernels::Table BalanceTable(int gamma, int brightness) {
    double const exponent = std::exp2(static_cast<double>(gamma) / -50.0);
    Kernels::Table table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        // Black stays black at every gamma, also at those where the power of 0 would be 1.
        double const level = i == 0 ? 0.0 : 255.0 * std::pow(static_cast<double>(i) / 255.0, exponent);
        table[i] = static_cast<unsigned char>(std::clamp(std::round(level) + brightness, 0.0, 255.0));
    }
    return table;
}

Kernels::Table IdentityTable() {
    Kernels::Table table{};
    std::iota(table.begin(), table.end(), static_cast<unsigned char>(0));
    return table;
}

} // namespace

class ColorBalance : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectColorBalance> {
public:
    ColorBalance(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSC(effectFactory, effectContext, ImplNames::DEFAULT) {}

    bool ConvertBack() const override { return true; }
    std::vector<PixFmt> const& GetSupportedFormats() const override { return StandInFormats(); }

    void ProcessInternal(DataHandle& data) override {
        if (IsPackedLuma(data->GetDescription()))
            EffectBaseCSC::ProcessInternal(data);
        else
            ProcessInternalCSC(data);
    }

    void ProcessInternalCSC(DataHandle& data) override {
        Kernels::Table const table = BalanceTable(settings.GetGamma(), settings.GetBrightness());
        IDataVideo& picture = OwnPicture(data);
        PixFmtDescription const& format = picture.GetDescription();
        bool const isLuma = format.model == ColorModel::Luma;
        for (unsigned char i = 0; i < (isLuma ? 1 : format.planesCount); ++i) {
            std::array<Kernels::Table, 4> tables;
            tables.fill(IdentityTable());
            bool isMapped = false;
            for (std::size_t k = 0; k < (isLuma ? 1 : format.componentsCount); ++k) {
                if (format.components[k].plane != i) continue;
                tables[format.components[k].offset] = table;
                isMapped = true;
            }
            if (!isMapped) continue;
            MutablePlane const plane = picture.GetMutablePlane(i);
            unsigned int const bytes = format.planes[i].bytes;
            Kernels::MapBytes(plane, plane, {tables.data(), bytes}, bytes);
        }
    }
};

VELNOR_EFFECT(SettingsEffectColorBalance, OneInput, ColorBalance)

} // namespace Velnor::Proc
