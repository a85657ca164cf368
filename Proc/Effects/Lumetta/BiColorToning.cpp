// BiColorToning: tints the picture with two colours.
//
//     split toning, back to the input's format -> half and half with the input -> vibrance 50 -> brightness +10
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectBiColorToning.h"
#include "Proc/Settings/SettingsEffectColorBalance.h"
#include "Proc/Settings/SettingsEffectImageBlender.h"
#include "Proc/Settings/SettingsEffectSplitToning.h"
#include "Proc/Settings/SettingsEffectVibrance.h"

namespace Velnor::Proc {
namespace {

SettingsEffectImageBlender HalfAndHalf() { return SettingsEffectImageBlender().SetAlpha(127); }

SettingsEffectColorBalance LittleBrighter() { return SettingsEffectColorBalance().SetBrightness(10); }

SettingsEffectVibrance MoreVivid() { return SettingsEffectVibrance().SetStrength(50); }

} // namespace

class BiColorToning : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectBiColorToning> {
public:
    BiColorToning(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext),
          blender(MakeTwoInput(HalfAndHalf())),
          brightness(MakeOneInput(LittleBrighter())),
          splitToning(MakeOneInput(TonesOf(settings))),
          vibrance(MakeOneInput(MoreVivid())),
          backConverter(MakeOneInput(SettingsColorspaceConverter())) {}

    using EffectBaseOneInput::SetSettings;

    void SetSettings(SettingsEffectBiColorToning const& next) override {
        splitToning->SetSettings(TonesOf(next));
        EffectBaseOneInput::SetSettings(next);
    }

    void ProcessInternal(DataHandle& data) override {
        ConfigureBack(data->GetPixFmt());
        // A copy, which costs nothing until it is written: the input is needed as it was.
        DataHandle toned = AsVideo(data).MakeCopy(CopyMode::Value);
        splitToning->ProcessData(toned);
        backConverter->ProcessData(toned);
        blender->ProcessData(toned, data);
        vibrance->ProcessData(toned);
        brightness->ProcessData(toned);
        data = toned;
    }

private:
    /// The two tones as they are.
    static SettingsEffectSplitToning TonesOf(SettingsEffectBiColorToning const& toning) {
        return SettingsEffectSplitToning()
            .SetShadowColor(toning.GetShadowColor())
            .SetHighlightColor(toning.GetHighlightColor());
    }

    void ConfigureBack(PixFmt format) {
        if (format == lastFormat) return;
        lastFormat = PixFmt::NONE;
        backConverter->SetSettings(SettingsColorspaceConverter(format, true));
        lastFormat = format;
    }

    intrusive_ptr<ITwoInputEffectVideo> blender;
    intrusive_ptr<IOneInputEffectVideo> brightness;
    intrusive_ptr<IOneInputEffectVideo> splitToning;
    intrusive_ptr<IOneInputEffectVideo> vibrance;
    intrusive_ptr<IOneInputEffectVideo> backConverter;
    PixFmt lastFormat = PixFmt::NONE; ///< That the back converter is configured for.
};

VELNOR_EFFECT(SettingsEffectBiColorToning, OneInput, BiColorToning)

} // namespace Velnor::Proc
