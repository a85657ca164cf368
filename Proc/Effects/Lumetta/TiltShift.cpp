// TiltShift: a smart blur of the whole picture, laid over the sharp one through a shape mask.
//
//     work   = upscaler(smart blur(downscaler(picture)))   at full size where the picture is 4 pixels wide or narrower
//     mask   = shape mask of the picture's frame           made anew for a new frame format or new settings
//     alpha  = mask at the resolution of the chroma        for a new mask or a new pixel format
//     result = picture with the work over it, as opaque as the mask says
//
// New settings reach no sub-effect by themselves: they make mask and blur stale, and the next picture configures both.
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Effects/Kit/MaskLayer.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectAlphaInserter.h"
#include "Proc/Settings/SettingsEffectExtraAlphaExtractor.h"
#include "Proc/Settings/SettingsEffectImageBlender.h"
#include "Proc/Settings/SettingsEffectSmartBlur.h"
#include "Proc/Settings/SettingsEffectTiltShift.h"
#include "Proc/Settings/SettingsResizer.h"

namespace Velnor::Proc {

class TiltShift : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectTiltShift> {
public:
    TiltShift(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext),
          formatConverter(MakeOneInput(SettingsColorspaceConverter())),
          smartBlur(MakeOneInput(SettingsEffectSmartBlur())),
          shapeMask(MakeOneInput(SettingsEffectShapeMask())),
          blender(MakeTwoInput(SettingsEffectImageBlender())),
          alphaExtractor(MakeOneInput(SettingsEffectExtraAlphaExtractor())),
          alphaInserter(MakeTwoInput(SettingsEffectAlphaInserter())),
          downscaler(MakeOneInput(SettingsResizer())),
          upscaler(MakeOneInput(SettingsResizer())) {
        // The initial settings, in the order in which hosts have always seen them.
        blender->SetSettings(SettingsEffectImageBlender());
        alphaExtractor->SetSettings(SettingsEffectExtraAlphaExtractor(PixFmt::NONE));
        alphaInserter->SetSettings(SettingsEffectAlphaInserter());
        ConfigureBlur();
    }

    void ResetSettings() override {
        layer.mask = nullptr;
        isBlurConfigured = false;
        EffectBaseOneInput::ResetSettings();
    }

    void ProcessInternal(DataHandle& data) override {
        data = AsVideo(data).MakeCopy(CopyMode::Independent);
        DataHandle const work = MakeWork(data);
        UpdateMask(data);
        UpdateMaskAlpha(data->GetPixFmt());
        blender->ProcessData(data, AddOpacity(work));
    }

private:
    // Sub-effects may write in place, so they get copies, which share their samples until then. Each stage commits what
    // it made last: one that fails leaves nothing behind that the next picture would trust.

    /// The blurred picture, of the size and the pixel format of `data`.
    DataHandle MakeWork(DataHandle const& data) {
        FrameFormat const frame = data->GetFrameFormat();
        DataHandle work = AsVideo(data).MakeCopy(CopyMode::Value);
        bool const isResized = ConfigureResizers(frame);
        ConfigureBlur();
        if (isResized) downscaler->ProcessData(work);
        smartBlur->ProcessData(work);
        if (isResized) upscaler->ProcessData(work);
        AsVideo(work).SetRectangle(0, 0, frame.width, frame.height);
        ConfigureConverter(data->GetPixFmt());
        formatConverter->ProcessData(work);
        return work;
    }

    DataHandle AddOpacity(DataHandle work) {
        alphaInserter->ProcessData(work, layer.mask);
        layer.AttachTo(AsVideo(work));
        return work;
    }

    void ConfigureBlur() {
        if (isBlurConfigured) return;
        smartBlur->SetSettings(SettingsEffectSmartBlur()
                                   .SetLumaRadius(100)
                                   .SetChromaRadius(100)
                                   .SetLumaBlur(settings.GetBlur())
                                   .SetChromaBlur(settings.GetBlur())
                                   .SetLumaSharpen(settings.GetSharpen())
                                   .SetChromaSharpen(settings.GetSharpen()));
        isBlurConfigured = true;
    }

    /// Whether the blur works on a reduced picture. The resizers are configured for the mask's frame as long as there
    /// is a mask: it goes before they change.
    bool ConfigureResizers(FrameFormat const& frame) {
        if (frame.width <= 4) return false;
        if (layer.IsOf(frame)) return true;
        layer.mask = nullptr;
        SettingsResizer resize = SettingsResizer()
                                     .SetMode(SettingsResizer::TO_FRAME)
                                     .SetFitting(SettingsResizer::INSIDE)
                                     .SetTarget({1024, 768, 1, 1})
                                     .SetMethod(SettingsResizer::FAST_BILINEAR);
        downscaler->SetSettings(resize);

        upscaler->SetSettings(resize.SetMethod(SettingsResizer::BICUBLIN)
                                  .SetFitting(SettingsResizer::EXACT)
                                  .SetTarget({frame.width + (frame.width & 1), frame.height + (frame.height & 1),
                                              frame.aspectNumerator, frame.aspectDenominator}));
        return true;
    }

    void ConfigureConverter(PixFmt format) {
        if (format == lastFormat) return;
        lastFormat = PixFmt::NONE;
        formatConverter->SetSettings(SettingsColorspaceConverter(format, true));
        lastFormat = format;
    }

    void UpdateMask(DataHandle const& data) {
        if (!layer.IsOf(data->GetFrameFormat())) layer.Draw(*shapeMask, settings.GetShapeMask(), data);
    }

    void UpdateMaskAlpha(PixFmt format) {
        using AlphaSettings = SettingsEffectExtraAlphaExtractor;
        bool const isSameFormat =
            dynamic_cast<AlphaSettings const&>(alphaExtractor->GetSettingsBase()).GetPixelFormat() == format;
        if (layer.chroma && isSameFormat) return;
        layer.chroma = nullptr;
        if (!isSameFormat) alphaExtractor->SetSettings(AlphaSettings(format));
        layer.MakeChroma(*alphaExtractor);
    }

    intrusive_ptr<IOneInputEffectVideo> formatConverter;
    intrusive_ptr<IOneInputEffectVideo> smartBlur;
    intrusive_ptr<IOneInputEffectVideo> shapeMask;
    intrusive_ptr<ITwoInputEffectVideo> blender;
    intrusive_ptr<IOneInputEffectVideo> alphaExtractor;
    intrusive_ptr<ITwoInputEffectVideo> alphaInserter;
    intrusive_ptr<IOneInputEffectVideo> downscaler;
    intrusive_ptr<IOneInputEffectVideo> upscaler;
    MaskLayer layer;
    PixFmt lastFormat = PixFmt::NONE; ///< Pixel format that the converter is configured for.
    bool isBlurConfigured = false;
};

VELNOR_EFFECT(SettingsEffectTiltShift, OneInput, TiltShift)

} // namespace Velnor::Proc
