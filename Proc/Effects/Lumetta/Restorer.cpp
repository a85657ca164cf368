// Restorer: an old print. What opening and closing by a small disc take away is thin: scratches and specks are chosen
// among it by their form and rebuilt from around; grain is smoothed where there is no edge; faded colour is stretched.
#include "Proc/Effects/Kit/ClearColours.h"
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Effects/Kit/PackedFormats.h"
#include "Proc/Effects/Kit/PullPush.h"
#include "Proc/Effects/Lumetta/Kernels/Style/Scratches.h"
#include "Proc/Settings/SettingsEffectColorBalanceAuto.h"
#include "Proc/Settings/SettingsEffectMorphology.h"
#include "Proc/Settings/SettingsEffectRestorer.h"
#include "Proc/Settings/SettingsEffectSmartBlur.h"

#include <algorithm>
#include <cstdlib>

namespace Velnor::Proc {
namespace {

/// Writes over `opened` how far the luma is from the nearer of its opening and its closing, whichever takes more away.
void Compare(ConstPlane const& luma, ConstPlane const& closed, MutablePlane const& opened) {
    for (std::uint64_t y = 0; y < luma.GetHeight(); ++y) {
        unsigned char const* const own = luma.GetRow(y);
        unsigned char const* const above = closed.GetRow(y);
        unsigned char* const to = opened.GetRow(y);
        for (std::uint64_t x = 0; x < luma.GetWidth(); ++x)
            to[x] = static_cast<unsigned char>(std::max(above[x] - own[x], own[x] - to[x]));
    }
}

} // namespace

class Restorer : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectRestorer> {
public:
    Restorer(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSC(effectFactory, effectContext),
          morphology(MakeOneInput(SettingsEffectMorphology())),
          smoother(MakeOneInput(SettingsEffectSmartBlur())),
          balance(MakeOneInput(SettingsEffectColorBalanceAuto())),
          toGrey(MakeOneInput(SettingsColorspaceConverter(PixFmt::GRAY8, false))) {}

    bool ConvertBack() const override { return true; }
    std::vector<PixFmt> const& GetSupportedFormats() const override { return Kernels::PackedRgbFormats(); }

    void ProcessInternalCSC(DataHandle& data) override {
        DataHandle result = AsVideo(data).MakeCopy(CopyMode::Independent);
        CoverClearPixels(AsVideo(result));
        if (settings.GetScratches() > 0) RemoveScratches(result);
        if (settings.GetDenoise() > 0) Denoise(result);
        if (settings.IsRecoverColor()) RecoverColor(result);
        data = result;
    }

private:
    void RemoveScratches(DataHandle& picture) {
        DataHandle luma = AsVideo(picture).MakeCopy(CopyMode::Share);
        toGrey->ProcessData(luma);
        DataHandle const closed = Filter(luma, SettingsEffectMorphology::CLOSE, settings.GetWidth());
        DataHandle thin = Filter(luma, SettingsEffectMorphology::OPEN, settings.GetWidth());
        MutablePlane const mask = AsVideo(thin).GetMutablePlane(0);
        Compare(Read(luma), Read(closed), mask);
        // From 60 levels at 1 % down to 10 at 100 %.
        Kernels::MarkDamage(mask, 60 - settings.GetScratches() / 2);
        DataHandle const sound = Filter(thin, SettingsEffectMorphology::ERODE, 1);
        MutablePlane const pixels = AsVideo(picture).GetMutablePlane(0);
        Kernels::FillHoles(pixels, Kernels::PackedRgb(picture->GetPixFmt()).pixelBytes, Read(sound),
                           FindClearAlpha(AsVideo(picture)));
    }

    void Denoise(DataHandle& picture) {
        RunWith(*smoother,
                SettingsEffectSmartBlur()
                    .SetLumaRadius(10)
                    .SetLumaBlur(settings.GetDenoise() / 2)
                    .SetChromaRadius(20)
                    .SetChromaBlur(settings.GetDenoise()),
                picture);
    }

    void RecoverColor(DataHandle& picture) {
        RunWith(*balance, SettingsEffectColorBalanceAuto().SetWhiteBalance(true), picture);
    }

    DataHandle Filter(DataHandle const& grey, SettingsEffectMorphology::Operation operation, int radius) {
        DataHandle result = AsVideo(grey).MakeCopy(CopyMode::Share);
        RunWith(*morphology, SettingsEffectMorphology(operation, radius), result);
        return result;
    }

    static ConstPlane Read(DataHandle const& picture) { return AsVideo(picture).GetPlane(0); }

    intrusive_ptr<IOneInputEffectVideo> morphology;
    intrusive_ptr<IOneInputEffectVideo> smoother;
    intrusive_ptr<IOneInputEffectVideo> balance;
    intrusive_ptr<IOneInputEffectVideo> toGrey;
};

VELNOR_EFFECT(SettingsEffectRestorer, OneInput, Restorer)

} // namespace Velnor::Proc
