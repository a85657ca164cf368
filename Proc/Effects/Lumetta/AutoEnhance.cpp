// AutoEnhance: improves the picture by itself, from several versions of it laid over each other.
//
//     A = luma with more local contrast               planar luma and chroma, as all that A takes in
//     B = mask of what is not dark, softly blurred
//     D, E = darker, and brighter mixed with darker   A takes in E
//     F = exposure raised, with D over it where B is  A takes in F
//     result = A, its light balanced; with an intensity of less than all, the input's share over it
//
// The mixes of A with others are done with whatever opacity the blender was left with: half to begin with, and after a
// call with an intensity the share of that call. Pictures that are enhanced one after the other rely on it.
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Effects/Kit/MaskLayer.h"
#include "Proc/Effects/Lumetta/Kernels/Tables/MatchTable.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectAutoEnhance.h"
#include "Proc/Settings/SettingsEffectBlur.h"
#include "Proc/Settings/SettingsEffectCLAHE.h"
#include "Proc/Settings/SettingsEffectColorBalance.h"
#include "Proc/Settings/SettingsEffectColorBalanceAuto.h"
#include "Proc/Settings/SettingsEffectExtraAlphaExtractor.h"
#include "Proc/Settings/SettingsEffectImageBlender.h"

#include <algorithm>
#include <limits>

namespace Velnor::Proc {
namespace {

constexpr int HALF = 127; ///< Opacity of an even mix.

SettingsEffectImageBlender WithAlpha(int alpha) { return SettingsEffectImageBlender().SetAlpha(alpha); }

DataHandle MakeNew(DataHandle const& source) { return AsVideo(source).MakeCopy(CopyMode::Independent); }

void CopyLuma(DataHandle const& source, DataHandle const& target) {
    CopyPlane(AsVideo(source).GetPlane(0), AsVideo(target).GetMutablePlane(0));
}

/// Brings the luma near a normal distribution.
void MatchLuma(DataHandle const& picture) {
    constexpr double DEVIATION = 24.0 / 255.0;
    MutablePlane const luma = AsVideo(picture).GetMutablePlane(0);
    Kernels::Table const table = Kernels::MatchTable(Kernels::CountGrey(luma), DEVIATION);
    Kernels::MapBytes(luma, luma, {&table, 1}, 1);
}

/// All or nothing: what is darker than 40 of 255 is dark.
void MarkBright(DataHandle const& picture) {
    constexpr std::size_t DARK = 40;
    Kernels::Table table;
    for (std::size_t i = 0; i < table.size(); ++i) table[i] = i < DARK ? 0 : 255;
    MutablePlane const plane = AsVideo(picture).GetMutablePlane(0);
    Kernels::MapBytes(plane, plane, {&table, 1}, 1);
}

/// Truncated; beyond the numbers of the blender's setting, the nearest of them.
int OpacityOfInput(double intensity) {
    double const alpha = 255 - (intensity - 0.0) * 255 / 100;
    constexpr double LIMIT = std::numeric_limits<int>::max();
    return alpha == alpha ? static_cast<int>(std::clamp(alpha, -LIMIT, LIMIT)) : 0;
}

} // namespace

class AutoEnhance : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectAutoEnhance> {
public:
    AutoEnhance(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext),
          blender(MakeTwoInput(WithAlpha(HALF))),
          blur(MakeOneInput(SettingsEffectBlur())),
          localContrast(MakeOneInput(SettingsEffectCLAHE(2.0))),
          gamma(MakeOneInput(SettingsEffectColorBalance())),
          autoBalance(MakeOneInput(SettingsEffectColorBalanceAuto())),
          alphaExtractor(MakeOneInput(SettingsEffectExtraAlphaExtractor())),
          backConverter(MakeOneInput(SettingsColorspaceConverter())),
          lumaConverter(MakeOneInput(SettingsColorspaceConverter(PixFmt::YUV444P, true))) {}

    void ProcessInternal(DataHandle& image) override {
        if (isBlenderAstray) blender->SetSettings(WithAlpha(opacity));
        isBlenderAstray = true;
        int left = HALF;
        ConfigureBack(image->GetPixFmt());
        if (settings.IsIntensityDefault()) {
            Enhance(image);
        } else {
            DataHandle const unprocessed = image;
            Enhance(image);
            left = OpacityOfInput(settings.GetIntensity());
            blender->SetSettings(WithAlpha(left));
            backConverter->ProcessData(image);
            blender->ProcessData(image, unprocessed);
        }
        opacity = left;
        isBlenderAstray = false;
    }

private:
    void ConfigureBack(PixFmt format) {
        if (format == lastFormat) return;
        lastFormat = PixFmt::NONE;
        backConverter->SetSettings(SettingsColorspaceConverter(format, true));
        lastFormat = format;
    }

    void Enhance(DataHandle& image) {
        DataHandle contrasted = MakeNew(image); // A
        lumaConverter->ProcessData(contrasted);
        DataHandle mask = context->CreateImage(PixFmt::GRAY8, contrasted->GetFrameFormat()); // B
        CopyLuma(contrasted, mask);
        RaiseContrast(contrasted, mask);
        MakeMask(mask);

        DataHandle darker = MakeNew(image); // D
        SetGamma(-25, darker);
        DataHandle brighter = MakeNew(image); // E
        SetGamma(25, brighter);
        blender->ProcessData(brighter, darker);
        lumaConverter->ProcessData(brighter);
        blender->ProcessData(contrasted, brighter);

        DataHandle exposed = MakeNew(image); // F
        SetGamma(5, exposed);
        Expose(exposed);
        AttachMask(mask, darker);
        RunWith(*blender, SettingsEffectImageBlender(), exposed, darker);
        blender->SetSettings(WithAlpha(HALF));
        lumaConverter->ProcessData(exposed);
        blender->ProcessData(contrasted, exposed);
        BalanceLight(contrasted);
        image = contrasted;
    }

    /// The matched luma is overwritten by the luma with local contrast, which is made from the luma as it was.
    void RaiseContrast(DataHandle const& picture, DataHandle const& luma) {
        DataHandle local = MakeNew(luma); // C
        MatchLuma(picture);
        localContrast->ProcessData(local);
        CopyLuma(local, picture);
    }

    void MakeMask(DataHandle& luma) {
        SetGamma(-30, luma);
        MarkBright(luma);
        RunWith(*blur,
                SettingsEffectBlur(SettingsEffectBlur::GAUSSIAN)
                    .SetAlgorithm(SettingsEffectBlur::GAUSSIAN)
                    .SetDevX(100.0)
                    .SetDevY(100.0)
                    .SetKernelLength(2),
                luma);
    }

    /// As extra alpha: at full resolution, and at that of the chroma planes of the input's format.
    void AttachMask(DataHandle const& mask, DataHandle const& picture) {
        DataHandle chroma = AsVideo(mask).MakeCopy(CopyMode::Value); // G
        RunWith(*alphaExtractor, SettingsEffectExtraAlphaExtractor(lastFormat), chroma);
        MaskLayer{mask, chroma}.AttachTo(AsVideo(picture));
    }

    void SetGamma(int percent, DataHandle& picture) {
        RunWith(*gamma, SettingsEffectColorBalance().SetGamma(percent), picture);
    }

    void Expose(DataHandle& picture) {
        RunWith(*autoBalance, SettingsEffectColorBalanceAuto().SetExposure(10), picture);
    }

    void BalanceLight(DataHandle& picture) {
        RunWith(*autoBalance, SettingsEffectColorBalanceAuto().SetLightBalance(true), picture);
    }

    intrusive_ptr<ITwoInputEffectVideo> blender;
    intrusive_ptr<IOneInputEffectVideo> blur;
    intrusive_ptr<IOneInputEffectVideo> localContrast;
    intrusive_ptr<IOneInputEffectVideo> gamma;
    intrusive_ptr<IOneInputEffectVideo> autoBalance;
    intrusive_ptr<IOneInputEffectVideo> alphaExtractor;
    intrusive_ptr<IOneInputEffectVideo> backConverter;
    intrusive_ptr<IOneInputEffectVideo> lumaConverter;
    PixFmt lastFormat = PixFmt::NONE; ///< That the back converter is configured for.
    int opacity = HALF;               ///< That the last finished picture left the blender with.
    bool isBlenderAstray = false;     ///< A picture that failed left the blender with another.
};

VELNOR_EFFECT(SettingsEffectAutoEnhance, OneInput, AutoEnhance)

} // namespace Velnor::Proc
