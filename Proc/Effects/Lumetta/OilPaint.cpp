// OilPaint: ImageMagick's oil painting, of a picture whose shorter side is at most 2048 pixels.
//
//     picture = upscaler(painter(downscaler(picture)))     the resizers only where the picture is larger
//
// All three are configured for a new frame format or new settings.
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Settings/SettingsEffectOilPaint.h"
#include "Proc/Settings/SettingsResizer.h"

#include <algorithm>

namespace Velnor::Proc {

class OilPaint : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectOilPaint> {
public:
    OilPaint(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext),
          painter(MakeOneInput(settings, ImplPhotoNames::IMAGEMAGICK)),
          downscaler(MakeOneInput(SettingsResizer())),
          upscaler(MakeOneInput(SettingsResizer())) {}

    void ResetSettings() override {
        configuredFrame = {};
        EffectBaseOneInput::ResetSettings();
    }

    void ProcessInternal(DataHandle& data) override {
        FrameFormat const frame = data->GetFrameFormat();
        Configure(frame);
        if (isReduced) downscaler->ProcessData(data);
        painter->ProcessData(data);
        if (!isReduced) return;
        upscaler->ProcessData(data);
        AsVideo(data).SetRectangle(0, 0, frame.width, frame.height);
    }

private:
    static constexpr std::uint32_t MAX_SHORTER_SIDE = 2048;

    void Configure(FrameFormat const& frame) {
        FrameFormat size = frame;
        size.width += size.width & 1;
        size.height += size.height & 1;
        if (size == configuredFrame) return;
        FrameFormat const evenFrame = size;
        configuredFrame = {};
        painter->SetSettings(settings);

        SettingsResizer resize = SettingsResizer()
                                     .SetMode(SettingsResizer::TO_FRAME)
                                     .SetFitting(SettingsResizer::STRETCH)
                                     .SetMethod(SettingsResizer::BICUBIC)
                                     .SetTarget(evenFrame);
        upscaler->SetSettings(resize);

        isReduced = false;
        for (; std::min(size.width, size.height) > MAX_SHORTER_SIDE; size.width /= 2, size.height /= 2)
            isReduced = true;
        downscaler->SetSettings(
            resize.SetFitting(SettingsResizer::INSIDE).SetMethod(SettingsResizer::FAST_BILINEAR).SetTarget(size));
        configuredFrame = evenFrame;
    }

    intrusive_ptr<IOneInputEffectVideo> painter;
    intrusive_ptr<IOneInputEffectVideo> downscaler;
    intrusive_ptr<IOneInputEffectVideo> upscaler;
    FrameFormat configuredFrame; ///< With even sides; all zero when nothing is configured.
    bool isReduced = false;
};

VELNOR_EFFECT(SettingsEffectOilPaint, OneInput, OilPaint)

} // namespace Velnor::Proc
