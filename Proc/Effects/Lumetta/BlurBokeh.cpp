// BlurBokeh: the blur of a lens out of focus, which turns bright points into images of the aperture.
//
//     work   = picture inside 512 x 512, bright samples amplified
//     kernel = the aperture, as large as the settings say against the work; kept from picture to picture
//     blur   = (work + work convolved with the kernel) / sum of the kernel, at the picture's size
//     result = blur with the picture over it, less opaque where the blur is bright
//
// The work counts in the sum and not in the divisor: the blur is brighter by (1 + sum) / sum, as it is meant to be.
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Effects/Kit/MaskLayer.h"
#include "Proc/Effects/Lumetta/Kernels/Blur/BokehCore.h"
#include "Proc/Effects/Lumetta/Kernels/Blur/BokehMask.h"
#include "Proc/Settings/SettingsEffectBlurBokeh.h"
#include "Proc/Settings/SettingsEffectExtraAlphaExtractor.h"
#include "Proc/Settings/SettingsEffectImageBlender.h"
#include "Proc/Settings/SettingsResizer.h"

#include <algorithm>

namespace Velnor::Proc {

class BlurBokeh : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectBlurBokeh> {
public:
    using EffectBaseCSC::SetSettings;

    BlurBokeh(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSC(effectFactory, effectContext),
          shapeGenerator(MakeOneInput(settings.GetGenerator())),
          maskConverter(MakeOneInput(SettingsColorspaceConverter())),
          restoreResizer(MakeOneInput(SettingsResizer())),
          workingResizer(MakeOneInput(SettingsResizer())),
          kernelResizer(MakeOneInput(SettingsResizer())),
          blender(MakeTwoInput(BlendOf(settings))),
          alphaExtractor(MakeOneInput(SettingsEffectExtraAlphaExtractor())) {
        maskConverter->SetSettings(SettingsColorspaceConverter(PixFmt::GRAY8, true));
        alphaExtractor->SetSettings(SettingsEffectExtraAlphaExtractor(PixFmt::RGB24));
    }

    /// Generator and blender are given their settings even when nothing changed.
    void SetSettings(SettingsEffectBlurBokeh const& next) override {
        Configure(next);
        EffectBaseCSC::SetSettings(next);
    }

    void ResetSettings() override {
        isKernelReady = false;
        EffectBaseCSC::ResetSettings();
    }

    bool ConvertBack() const override { return true; }

    std::vector<PixFmt> const& GetSupportedFormats() const override {
        static std::vector<PixFmt> const formats{PixFmt::RGB24, PixFmt::BGR24};
        return formats;
    }

    /// A kernel is kept from the first picture that is finished with it.
    void ProcessInternal(DataHandle& data) override {
        if (!isConfigured) Configure(settings);
        EffectBaseCSC::ProcessInternal(data);
        isKernelReady = true;
    }

    void ProcessInternalCSC(DataHandle& data) override {
        ConfigureResizers(data->GetFrameFormat());
        DataHandle work = AsVideo(data).MakeCopy(CopyMode::Value);
        workingResizer->ProcessData(work);
        FrameFormat const workFrame = work->GetFrameFormat();
        if (!isKernelReady) BuildKernel(workFrame);
        if (kernel.width >= workFrame.width || kernel.height >= workFrame.height)
            ThrowTooLarge(workFrame, " (" + SizeText(kernel.width, kernel.height) + " pixels)");

        DataHandle blurred = Blur(AsVideo(ConstDataHandle(work)));
        restoreResizer->ProcessData(blurred);
        if (configuredFrame.width < workFrame.width || configuredFrame.height < workFrame.height)
            AsVideo(blurred).SetRectangle(0, 0, configuredFrame.width, configuredFrame.height);
        Composite(blurred, data);
        data = blurred;
    }

private:
    static constexpr std::uint32_t WORKING_SIDE = 512;
    static constexpr double MAX_SIZE = 16; ///< No aperture of more than one side fits: larger ones are not even made.

    static SettingsEffectImageBlender BlendOf(SettingsEffectBlurBokeh const& bokeh) {
        int const alpha = Kernels::TruncateToInt(255 - 255 * bokeh.GetStrength()) & 255;
        return {0, 0, alpha, BLEND_LARGER};
    }

    void Configure(SettingsEffectBlurBokeh const& bokeh) {
        isConfigured = false;
        shapeGenerator->SetSettings(bokeh.GetGenerator());
        blender->SetSettings(BlendOf(bokeh));
        isConfigured = true;
    }

    void ConfigureResizers(FrameFormat const& frame) {
        if (frame == configuredFrame) return;
        configuredFrame = {};
        SettingsResizer resize =
            SettingsResizer()
                .SetMode(SettingsResizer::TO_FRAME)
                .SetFitting(SettingsResizer::INSIDE)
                .SetTarget({WORKING_SIDE, WORKING_SIDE, frame.aspectNumerator, frame.aspectDenominator})
                .SetMethod(SettingsResizer::FAST_BILINEAR);
        workingResizer->SetSettings(resize);

        restoreResizer->SetSettings(resize.SetFitting(SettingsResizer::STRETCH)
                                        .SetTarget({frame.width + (frame.width & 1), frame.height + (frame.height & 1),
                                                    frame.aspectNumerator, frame.aspectDenominator})
                                        .SetMethod(SettingsResizer::BICUBLIN));
        configuredFrame = frame;
    }

    void BuildKernel(FrameFormat const& workFrame) {
        if (!(settings.GetSize() <= MAX_SIZE)) ThrowTooLarge(workFrame);
        DataHandle shape;
        shapeGenerator->ProcessData(shape);
        FrameFormat const shapeFrame = AsVideo(shape).GetFrameFormat();
        RunWith(*kernelResizer,
                SettingsResizer()
                    .SetMode(SettingsResizer::BY_FACTOR)
                    .SetMethod(SettingsResizer::BICUBLIN)
                    .SetFactor(settings.GetSize() * std::min(workFrame.width, workFrame.height) /
                               std::min(shapeFrame.width, shapeFrame.height)),
                shape);
        maskConverter->ProcessData(shape);
        kernel =
            Kernels::MakeBokehKernel(AsVideo(shape).GetPlane(0), settings.GetBokehThreshold(), settings.GetBokehGain());
    }

    DataHandle Blur(IDataVideo const& work) const {
        Kernels::PaddedPicture const padded =
            Kernels::PadPicture(work.GetPlane(0), kernel, settings.GetImageThreshold(), settings.GetImageGain());
        VideoHandle const blurred = context->CreateImage(work.GetPixFmt(), work.GetFrameFormat());
        Kernels::WriteLevels(Kernels::Convolve(padded, kernel), kernel.sum, blurred->GetMutablePlane(0));
        return blurred;
    }

    /// Lays the sharp picture over the blurred one. The mask is attached to a copy: the caller may hold the picture.
    void Composite(DataHandle& blurred, DataHandle const& data) {
        DataHandle mask = AsVideo(blurred).MakeCopy(CopyMode::Share);
        maskConverter->ProcessData(mask);
        FrameFormat const frame = mask->GetFrameFormat();
        Kernels::Histogram const levels = Kernels::CountGrey(AsVideo(mask).GetPlane(0));
        Kernels::Table const curve[] = {Kernels::MakeBokehMask(levels, frame.width * frame.height,
                                                               settings.GetThreshold(), settings.GetStrength())};
        MutablePlane const opacity = AsVideo(mask).GetMutablePlane(0);
        Kernels::MapBytes(opacity, opacity, curve, 1);

        MaskLayer layer{mask, nullptr};
        layer.MakeChroma(*alphaExtractor);
        VideoHandle const sharp = AsVideo(data).MakeCopy(CopyMode::Share);
        layer.AttachTo(*sharp);
        blender->ProcessData(blurred, sharp);
    }

    /// Function, source and line are those by which callers have always known this failure.
    [[noreturn]] void ThrowTooLarge(FrameFormat const& workFrame, std::string const& kernelSize = {}) const {
        EffectException error;
        error << TagTranscodingErrorCode(TranscodingErrors::FilterFailed);
        Velnor::Details::ThrowDescribed(
            error,
            "The aperture of size " + TextForm<double>::Print(settings.GetSize()) + kernelSize +
                " does not fit into the working picture of " + SizeText(workFrame) +
                " pixels: it must be smaller in both directions.",
            boost::source_location("Proc/Effects/Lumetta/BlurBokeh", 140,
                                   "void __cdecl Velnor::Proc::BlurBokeh::ProcessInternalCSC(class "
                                   "boost::intrusive_ptr<class Velnor::Proc::IDataVideo> &)"));
    }

    intrusive_ptr<IOneInputEffectVideo> shapeGenerator;
    intrusive_ptr<IOneInputEffectVideo> maskConverter;
    intrusive_ptr<IOneInputEffectVideo> restoreResizer;
    intrusive_ptr<IOneInputEffectVideo> workingResizer;
    intrusive_ptr<IOneInputEffectVideo> kernelResizer;
    intrusive_ptr<ITwoInputEffectVideo> blender;
    intrusive_ptr<IOneInputEffectVideo> alphaExtractor;
    Kernels::BokehKernel kernel;
    bool isKernelReady = false;
    bool isConfigured = true;    ///< Generator and blender, for the settings.
    FrameFormat configuredFrame; ///< That the resizers are configured for; all zero when they are not.
};

VELNOR_EFFECT(SettingsEffectBlurBokeh, OneInput, BlurBokeh)

} // namespace Velnor::Proc
