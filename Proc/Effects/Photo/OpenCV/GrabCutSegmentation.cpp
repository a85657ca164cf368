// GrabCutSegmentation: separates an object from its background, by OpenCV's grabCut started from strokes.
//
// Pixels under a stroke are what the stroke says. All others begin as background that may turn out to be object: the
// first model of the object is made of its strokes alone. The strokes are the second picture, one byte a pixel; values
// that are neither of the two mean no stroke. The result holds the two values.
//
// C. Rother, V. Kolmogorov, A. Blake, "GrabCut: Interactive Foreground Extraction using Iterated Graph Cuts", ACM
// Transactions on Graphics 23(3), 2004.
#include "Proc/Effects/Photo/Guarded.h"
#include "Proc/Effects/Photo/OpenCV/CVEffects.h"
#include "Proc/Effects/Photo/OpenCV/CVPicture.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"

#include <opencv2/imgproc.hpp>

namespace Velnor::Proc {
namespace {

constexpr int ITERATIONS = 5;
constexpr int LEAST_PIXELS = 5;                  ///< Colours in each of grabCut's models.
constexpr std::uint64_t SEED = 0x4c756d65747461; ///< Of the first clusters: the same picture has the same object.

std::string SizeOf(FrameFormat const& frame) {
    return std::to_string(frame.width) + " x " + std::to_string(frame.height);
}

void RequireStrokes(cv::Mat const& marks, int kind, char const* what, int value) {
    int const pixels = cv::countNonZero(marks == kind);
    if (pixels < LEAST_PIXELS)
        VELNOR_THROW(EffectException, std::string("The strokes on the ") + what + " (value " + std::to_string(value) +
                                          ") cover " + std::to_string(pixels) + " pixels; the segmentation needs " +
                                          std::to_string(LEAST_PIXELS) + " or more of each kind.");
}

} // namespace

class GrabCutSegmentation : public EffectBaseTwoInput<ITwoInputEffectVideo, SettingsEffectGrabCutSegmentation>,
                            public OnOpenCV {
public:
    GrabCutSegmentation(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseTwoInput(effectFactory, effectContext, ImplPhotoNames::OPENCV),
          converter(MakeOneInput(SettingsColorspaceConverter(PixFmt::BGR24, true))) {}

    void ProcessInternal(DataHandle& first, ConstDataHandle const& second) override {
        cv::Mat marks = ReadMarks(first->GetFrameFormat(), AsVideo(second));
        FrameFormat const frame = first->GetFrameFormat();
        VideoHandle const result = context->CreateImage(PixFmt::GRAY8, frame);
        result->CopyAttributes(*first);
        converter->ProcessData(first);
        cv::theRNG().state = SEED;
        cv::Mat background;
        cv::Mat foreground;
        cv::grabCut(ReadPlane(AsVideo(first), 0), marks, {}, background, foreground, ITERATIONS, cv::GC_INIT_WITH_MASK);
        cv::Mat target = ViewOf(result->GetMutablePlane(0), result->GetDescription().planes[0]);
        target.setTo(settings.GetBackground() & 255);
        target.setTo(settings.GetForeground() & 255, (marks & 1) != 0);
        first = result;
    }

private:
    /// The strokes in grabCut's numbers.
    cv::Mat ReadMarks(FrameFormat const& frame, IDataVideo const& strokes) const {
        if (strokes.GetPixFmt() != PixFmt::GRAY8)
            VELNOR_THROW(EffectException, "The strokes are a picture in " + std::string(strokes.GetDescription().name) +
                                              "; they must be in gray.");
        FrameFormat const size = strokes.GetFrameFormat();
        if (size.width != frame.width || size.height != frame.height)
            VELNOR_THROW(EffectException, "The strokes are " + SizeOf(size) + " pixels, the picture is " +
                                              SizeOf(frame) + "; they must be of one size.");
        int const foreground = settings.GetForeground() & 255;
        int const background = settings.GetBackground() & 255;
        if (foreground == background)
            VELNOR_THROW(EffectException, "Foreground and background have both the value " +
                                              std::to_string(foreground) + "; they must differ.");
        cv::Mat const values = ReadPlane(strokes, 0);
        cv::Mat marks(values.size(), CV_8U, cv::Scalar(cv::GC_PR_BGD));
        marks.setTo(cv::GC_FGD, values == foreground);
        marks.setTo(cv::GC_BGD, values == background);
        RequireStrokes(marks, cv::GC_FGD, "object", foreground);
        RequireStrokes(marks, cv::GC_BGD, "background", background);
        return marks;
    }

    intrusive_ptr<IOneInputEffectVideo> converter;
};

intrusive_ptr<IEffect> CreateGrabCutSegmentation(FactoryHandle const& factory, ContextHandle const& context) {
    return MakeCVEffect<GrabCutSegmentation>(factory, context);
}

} // namespace Velnor::Proc
