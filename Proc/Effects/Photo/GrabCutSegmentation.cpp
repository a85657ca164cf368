// Segmentation by OpenCV's GrabCut (C. Rother, V. Kolmogorov, A. Blake, "GrabCut", SIGGRAPH 2004): colour models of
// object and background, learned from the strokes, and a minimum cut take turns.
#include "Proc/Effects/Lumetta/EffectBase.h"
#include "Proc/Effects/Photo/MatView.h"
#include "Proc/Effects/Photo/PhotoEffects.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"

#include <opencv2/imgproc.hpp>

#include <string>

namespace Velnor::Proc {
namespace {

constexpr int ITERATIONS = 5;

std::string SizeText(FrameFormat const& frame) {
    return std::to_string(frame.width) + " x " + std::to_string(frame.height);
}

struct StrokeCounts {
    std::uint64_t foreground = 0;
    std::uint64_t background = 0;
};

/// OpenCV's mask of certain and probable pixels. What has no stroke is probably background, so that the model of the
/// object is learned from its strokes alone.
StrokeCounts MakeMask(ConstPlane const& strokes, unsigned char foreground, unsigned char background, cv::Mat& mask) {
    StrokeCounts counts;
    for (int y = 0; y < mask.rows; ++y) {
        unsigned char const* const from = strokes.GetRow(static_cast<std::uint64_t>(y));
        auto* const to = mask.ptr<unsigned char>(y);
        for (int x = 0; x < mask.cols; ++x) {
            bool const isForeground = from[x] == foreground;
            bool const isBackground = !isForeground && from[x] == background;
            counts.foreground += isForeground ? 1 : 0;
            counts.background += isBackground ? 1 : 0;
            to[x] = isForeground ? cv::GC_FGD : isBackground ? cv::GC_BGD : cv::GC_PR_BGD;
        }
    }
    return counts;
}

} // namespace

class GrabCutSegmentation : public EffectBaseTwoInput<ITwoInputEffectVideo, SettingsEffectGrabCutSegmentation> {
public:
    GrabCutSegmentation(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseTwoInput(effectFactory, effectContext, ImplPhotoNames::OPENCV),
          converter(MakeOneInput(SettingsColorspaceConverter(PixFmt::BGR24, false))) {}

    void ProcessInternal(intrusive_ptr<IData>& first, intrusive_ptr<IData const> const& second) override {
        IDataVideo const& strokes = AsVideo(second);
        FrameFormat const frame = AsVideo(first).GetFrameFormat();
        if (strokes.GetPixFmt() != PixFmt::GRAY8)
            VELNOR_THROW(EffectException, "The strokes of the segmentation are in format " +
                                              std::string(strokes.GetDescription().name) + "; gray is needed.");
        if (strokes.GetFrameFormat().width != frame.width || strokes.GetFrameFormat().height != frame.height)
            VELNOR_THROW(EffectException, "The strokes of the segmentation are " + SizeText(strokes.GetFrameFormat()) +
                                              " pixels, the picture is " + SizeText(frame) + ".");
        auto const foreground = static_cast<unsigned char>(settings.GetForeground());
        auto const background = static_cast<unsigned char>(settings.GetBackground());
        cv::Mat mask(static_cast<int>(frame.height), static_cast<int>(frame.width), CV_8U);
        StrokeCounts const counts = MakeMask(strokes.GetPlane(0), foreground, background, mask);
        if (counts.foreground == 0 || counts.background == 0)
            VELNOR_THROW(EffectException, "The strokes of the segmentation mark no " +
                                              std::string(counts.foreground == 0 ? "object" : "background") +
                                              ": no byte is " +
                                              std::to_string(counts.foreground == 0 ? foreground : background) + ".");
        WithOpenCV("segmentation", [&] {
            intrusive_ptr<IData> colours = first;
            converter->ProcessData(colours);
            cv::Mat backgroundModel;
            cv::Mat foregroundModel;
            cv::setRNGSeed(0); // The models start from random centres: the same ones for every picture.
            cv::grabCut(AsMat(std::as_const(AsVideo(colours)).GetPlane(0)), mask, cv::Rect(), backgroundModel,
                        foregroundModel, ITERATIONS, cv::GC_INIT_WITH_MASK);
            first = MakeResult(frame, mask, foreground, background);
        });
    }

private:
    VideoHandle MakeResult(FrameFormat const& frame, cv::Mat const& mask, unsigned char foreground,
                           unsigned char background) const {
        VideoHandle const result = context->CreateImage(PixFmt::GRAY8, frame);
        MutablePlane const samples = result->GetMutablePlane(0);
        for (int y = 0; y < mask.rows; ++y) {
            auto const* const from = mask.ptr<unsigned char>(y);
            unsigned char* const to = samples.GetRow(static_cast<std::uint64_t>(y));
            for (int x = 0; x < mask.cols; ++x)
                to[x] = from[x] == cv::GC_FGD || from[x] == cv::GC_PR_FGD ? foreground : background;
        }
        return result;
    }

    intrusive_ptr<IOneInputEffectVideo> converter;
};

intrusive_ptr<IEffect> CreateGrabCutSegmentation(FactoryHandle const& factory, ContextHandle const& context) {
    return MakeEffect<GrabCutSegmentation>(factory, context);
}

} // namespace Velnor::Proc
