// Pixelate: a mosaic, by making the picture small and large again.
//
//     factor  = scale curve of the strength, for the picture's shorter side
//     picture = upscaler(downscaler(picture))      configured for a new frame format or new settings
//
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Effects/Lumetta/Kernels/Geometry/ScaleCurve.h"
#include "Proc/Settings/SettingsEffectPixelate.h"

namespace Velnor::Proc {

class Pixelate : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectPixelate> {
public:
    Pixelate(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext),
          downscaler(MakeOneInput(SettingsResizer())),
          upscaler(MakeOneInput(SettingsResizer())) {}

    void ResetSettings() override {
        configuredFrame = {};
        EffectBaseOneInput::ResetSettings();
    }

    void ProcessInternal(DataHandle& data) override {
        FrameFormat const frame = data->GetFrameFormat();
        Configure(frame);
        downscaler->ProcessData(data);
        upscaler->ProcessData(data);
        AsVideo(data).SetRectangle(0, 0, frame.width, frame.height);
    }

private:
    void Configure(FrameFormat const& frame) {
        if (frame == configuredFrame) return;
        configuredFrame = {};
        SettingsResizer resize =
            SettingsResizer()
                .SetKeepAttributes(true)
                .SetAtLeastOnePixel(true)
                .SetMethod(settings.GetMethodDownscale())
                .SetMode(SettingsResizer::BY_FACTOR)
                .SetFactor(Kernels::PixelateScale(settings.GetStrength(), frame.width, frame.height));
        LOG(INFO) << "Pixelate scale: " << resize.GetFactor();
        downscaler->SetSettings(resize);

        upscaler->SetSettings(resize.SetMethod(settings.GetMethodUpscale())
                                  .SetMode(SettingsResizer::TO_FRAME)
                                  .SetFitting(SettingsResizer::STRETCH)
                                  .SetTarget(frame));
        configuredFrame = frame;
    }

    intrusive_ptr<IOneInputEffectVideo> downscaler;
    intrusive_ptr<IOneInputEffectVideo> upscaler;
    FrameFormat configuredFrame; ///< That the resizers are configured for; all zero when they are not.
};

VELNOR_EFFECT(SettingsEffectPixelate, OneInput, Pixelate)

} // namespace Velnor::Proc
