// WhiteBalance: pulls a reference colour to grey, and the rest of each component's range along with it.
//
//     table k = two line segments about (component k of the reference, its grey level), k = 0, 1, 2
//     pixel   = table 0, 1, 2 on its first three bytes
//
// Components and bytes are paired by position; `Color` is stored blue first, so the list of formats begins with the
// blue-first one and the converter brings every red-first picture there.
#include "Proc/Effects/Kit/ByteTables.h"
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Effects/Lumetta/Kernels/Tables/BalanceTable.h"
#include "Proc/Settings/SettingsEffectWhiteBalance.h"

namespace Velnor::Proc {

class WhiteBalance : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectWhiteBalance> {
public:
    using EffectBaseCSC::EffectBaseCSC;
    using EffectBaseCSC::SetSettings;

    /// Nothing is cached, so a new colour needs no reset.
    void SetSettings(SettingsEffectWhiteBalance const& next) override {
        if (settings.GetReference() != next.GetReference()) settings = next;
        EffectBaseCSC::SetSettings(next);
    }

    bool ConvertBack() const override { return true; }

    std::vector<PixFmt> const& GetSupportedFormats() const override {
        static std::vector<PixFmt> const formats{PixFmt::BGR24, PixFmt::RGB24, PixFmt::BGRA,
                                                 PixFmt::RGBA,  PixFmt::RGBX,  PixFmt::BGRX};
        return formats;
    }

    void ProcessInternalCSC(DataHandle& data) override {
        Color const reference = settings.GetReference();
        int const grey = (reference[0] + reference[1] + reference[2]) / 3;
        std::array<Kernels::Table, 3> tables;
        for (unsigned int k = 0; k < tables.size(); ++k) tables[k] = Kernels::BalanceTable(reference[k], grey);

        MutablePlane const plane = AsVideo(data).GetMutablePlane(0);
        auto const pixelBytes =
            static_cast<unsigned int>(PixFmtDescription::Find(data->GetPixFmt())->GetPlanWidthSize(1, 0));
        Kernels::MapBytes(plane, plane, tables, pixelBytes);
    }
};

VELNOR_EFFECT(SettingsEffectWhiteBalance, OneInput, WhiteBalance)

} // namespace Velnor::Proc
