// Resizer: another number of pixels, by libswscale.
//
//     part    = what of the picture is wanted
//     scaled  = each plane of it, or its packed pixels, in as many steps as the filters' lengths ask for
//     result  = the scaled part, with bars around where the fit asks for them
//
#include "Proc/Effects/General/FormatConverter.h"
#include "Proc/Effects/General/PictureAccess.h"
#include "Proc/Effects/General/RepeatSamples.h"
#include "Proc/Effects/General/ResizePlan.h"
#include "Proc/Effects/General/WeightedScale.h"
#include "Proc/Effects/Kit/ClearColours.h"
#include "Proc/Effects/Kit/EffectBase.h"

namespace Velnor::Proc {

class Resizer : public EffectBaseOneInput<IOneInputEffectVideo, SettingsResizer> {
public:
    Resizer(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext, ImplNames::DEFAULT), converter(effectContext) {}

    /// Extra alpha is dropped: it belongs to the pixels that were. A picture that has the size already is left as it
    /// is, but for a new pixel aspect.
    void ProcessInternal(DataHandle& data) override {
        IDataVideo const& picture = AsVideo(data);
        FrameFormat const frame = picture.GetFrameFormat();
        ResizePlan const plan = PlanResize(frame, picture.GetDescription(), settings);
        if (plan.result == frame && !plan.NeedsScaling() && !plan.IsCut(frame)) return;
        RequireSize({plan.scaledWidth, plan.scaledHeight});
        RequireSize({plan.result.width, plan.result.height});

        VideoHandle result = picture.MakePart(plan.part);
        result->DropExtraAlpha();
        if (plan.NeedsScaling()) result = Scale(*result, {plan.scaledWidth, plan.scaledHeight});
        if (plan.HasBars()) result = PutBars(*result, plan);
        result->SetAspect(plan.result.aspectNumerator, plan.result.aspectDenominator);
        if (settings.IsKeepAttributes()) result->CopyAttributes(*data);
        data = result;
    }

private:
    /// libswscale counts in 32 bits, bytes of a row and rows alike, and writes beyond its buffers when they overflow.
    static void RequireSize(Size size) {
        constexpr std::uint64_t MOST_PIXELS = 1U << 28;
        constexpr std::uint32_t LONGEST_SIDE = 1U << 17;
        if (size.width <= LONGEST_SIDE && size.height <= LONGEST_SIDE &&
            std::uint64_t{size.width} * size.height <= MOST_PIXELS)
            return;
        VELNOR_THROW(EffectException, "The resizer would make a picture of " + SizeText(size.width, size.height) +
                                          " pixels; at most " + std::to_string(MOST_PIXELS) + " in all and " +
                                          std::to_string(LONGEST_SIDE) + " on a side are possible.");
    }

    /// Packed luma and chroma are scaled as planes and packed again; a palette picture comes out as RGBA.
    VideoHandle Scale(IDataVideo const& picture, Size size) {
        PixFmtDescription const& format = picture.GetDescription();
        if (format.model == ColorModel::Palette) return Scale(*converter.Convert(picture, PixFmt::RGBA), size);
        bool const isPoint = settings.GetMethod() == SettingsResizer::POINT;
        if (isPoint && (format.model != ColorModel::Luma || format.planes[0].shiftX == 0))
            return RepeatPixels(picture, size);
        PixFmt const twin = GetPlanarTwin(format);
        if (twin != format.format)
            return converter.Convert(*Scale(*converter.Convert(picture, twin), size), format.format);
        return ScaleInSteps(picture, size);
    }

    VideoHandle Make(IDataVideo const& like, Size size) const {
        FrameFormat frame = like.GetFrameFormat();
        frame.width = size.width;
        frame.height = size.height;
        return context->CreateImage(like.GetPixFmt(), frame);
    }

    VideoHandle RepeatPixels(IDataVideo const& picture, Size size) const {
        VideoHandle const result = Make(picture, size);
        for (unsigned char i = 0; i < GetPlanesCount(picture); ++i)
            RepeatSamples(picture.GetPlane(i), result->GetMutablePlane(i), picture.GetDescription().planes[i].bytes);
        return result;
    }

    VideoHandle ScaleInSteps(IDataVideo const& picture, Size size) {
        FrameFormat const frame = picture.GetFrameFormat();
        VideoHandle scaled;
        for (Size const step : PlanSteps({frame.width, frame.height}, size, settings.GetMethod()))
            scaled = ScaleOnce(scaled ? *scaled : picture, step,
                               step == size ? settings.GetMethod() : SettingsResizer::AREA);
        return scaled;
    }

    /// Planes are scaled one by one: their numbers take no way through another matrix.
    VideoHandle ScaleOnce(IDataVideo const& given, Size size, SettingsResizer::ResizeMethods method) {
        VideoHandle const result = Make(given, size);
        VideoHandle const covered = CopyCovered(given);
        IDataVideo const& picture = *covered;
        FrameFormat const frame = picture.GetFrameFormat();
        PixFmtDescription const& format = picture.GetDescription();
        if (format.planesCount == 1)
            converter.GetScaler().Scale({format.format, frame.width, frame.height, {picture.GetPlane(0)}},
                                        {format.format, size.width, size.height, {result->GetMutablePlane(0)}}, method);
        for (unsigned char i = 0; i < format.planesCount && format.planesCount > 1; ++i)
            converter.GetScaler().Scale(AsGrey(picture.GetPlane(i)), AsGrey(result->GetMutablePlane(i)),
                                        MethodOfPlane(format, i, method));
        WeighColours(picture, *result, method);
        return result;
    }

    /// What is clear does not bleed into what is seen.
    void WeighColours(IDataVideo const& picture, IDataVideo& result, SettingsResizer::ResizeMethods method) {
        ConstPlane const alpha = FindClearAlpha(picture);
        if (alpha.IsEmpty()) return;
        PixFmtDescription const& format = picture.GetDescription();
        bool const isSubsampled = format.chromaShiftX != 0 || format.chromaShiftY != 0;
        VideoHandle const chromaAlpha = isSubsampled ? MakeChromaMask(*context, alpha, format) : nullptr;
        for (unsigned char i = 0; i < format.planesCount; ++i) {
            PlaneLayout const& layout = format.planes[i];
            bool const holdsAlpha = i == format.alpha.plane;
            if (holdsAlpha && layout.bytes == 1) continue;
            bool const isFull = layout.shiftX == 0 && layout.shiftY == 0;
            ScaleByAlpha(*context, converter.GetScaler(),
                         {picture.GetPlane(i), layout.bytes, holdsAlpha ? format.alpha.offset : -1,
                          isFull ? alpha : chromaAlpha->GetPlane(0)},
                         result.GetMutablePlane(i), MethodOfPlane(format, i, method));
        }
    }

    static SettingsResizer::ResizeMethods MethodOfPlane(PixFmtDescription const& format, unsigned char plane,
                                                        SettingsResizer::ResizeMethods method) {
        if (method != SettingsResizer::BICUBLIN) return method;
        bool const isChroma = format.model == ColorModel::Luma && (plane == 1 || plane == 2);
        return isChroma ? SettingsResizer::BILINEAR : SettingsResizer::BICUBIC;
    }

    VideoHandle PutBars(IDataVideo const& picture, ResizePlan const& plan) const {
        VideoHandle result = Make(picture, {plan.result.width, plan.result.height});
        result->Fill(Color::Black(Color::Opacity::Opaque));
        CopyDataVideo(picture.MakeCopy(CopyMode::Share), result, static_cast<int>(plan.left),
                      static_cast<int>(plan.top));
        return result;
    }

    FormatConverter converter;
};

VELNOR_EFFECT(SettingsResizer, OneInput, Resizer)

} // namespace Velnor::Proc
