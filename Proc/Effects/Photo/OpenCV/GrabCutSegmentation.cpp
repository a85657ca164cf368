// GrabCutSegmentation: separates an object from its background, by OpenCV's grabCut started from strokes.
//
// Pixels under a stroke are what the stroke says. The first models of object and background are made of the strokes
// alone. What is cut out apart from all strokes on the object is background, and small holes in the object without a
// stroke on the background are object. The strokes are the second picture, one byte a pixel; values that are neither of
// the two mean no stroke. The result holds the two values.
//
// C. Rother, V. Kolmogorov, A. Blake, "GrabCut: Interactive Foreground Extraction using Iterated Graph Cuts", ACM
// Transactions on Graphics 23(3), 2004.
#include "Proc/Effects/Kit/ClearColours.h"
#include "Proc/Effects/Kit/RequirePictures.h"
#include "Proc/Effects/Photo/Guarded.h"
#include "Proc/Effects/Photo/OpenCV/CVEffects.h"
#include "Proc/Effects/Photo/OpenCV/CVPicture.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"

#include <opencv2/imgproc.hpp>

#include <vector>

namespace Velnor::Proc {
namespace {

constexpr int ITERATIONS = 5;
constexpr double LARGEST_HOLE = 0.02; ///< That is closed, of the object's area: a larger one is seen through.
constexpr int LEAST_PIXELS = 5;       ///< Colours in each of grabCut's models.
constexpr std::uint64_t SEED = 0x4c756d65747461; ///< Of the first clusters: the same picture has the same object.

void RequireStrokes(cv::Mat const& marks, int kind, char const* what, int value) {
    int const pixels = cv::countNonZero(marks == kind);
    if (pixels < LEAST_PIXELS)
        VELNOR_THROW(EffectException, std::string("The strokes on the ") + what + " (value " + std::to_string(value) +
                                          ") cover " + std::to_string(pixels) + " pixels; the segmentation needs " +
                                          std::to_string(LEAST_PIXELS) + " or more of each kind.");
}

/// The pixels under strokes alone, as a picture of one row.
void PackStrokes(cv::Mat const& picture, cv::Mat const& marks, cv::Mat& strokes, cv::Mat& kinds) {
    for (int y = 0; y < marks.rows; ++y)
        for (int x = 0; x < marks.cols; ++x) {
            unsigned char const kind = marks.at<unsigned char>(y, x);
            if (kind != cv::GC_FGD && kind != cv::GC_BGD) continue;
            strokes.push_back(picture.at<cv::Vec3b>(y, x));
            kinds.push_back(kind);
        }
}

/// The first cut is by models of the strokes' colours alone: models that begin with all the unknown pixels as
/// background have learnt the object's own colours as those of the background, and leave holes where no stroke went.
void Segment(cv::Mat const& picture, cv::Mat& marks) {
    cv::Mat strokes;
    cv::Mat kinds;
    PackStrokes(picture, marks, strokes, kinds);
    cv::Mat background;
    cv::Mat foreground;
    cv::grabCut(strokes, kinds, {}, background, foreground, 0, cv::GC_INIT_WITH_MASK);
    cv::grabCut(picture, marks, {}, background, foreground, 1, cv::GC_EVAL_FREEZE_MODEL);
    cv::grabCut(picture, marks, {}, background, foreground, ITERATIONS, cv::GC_EVAL);
}

/// The connected parts of a mask in which no mark is of a kind.
/// @param largest  pixels of the parts that are looked for
/// @param inside   whether parts at the picture's border are left out
cv::Mat FindUnmarked(cv::Mat const& mask, cv::Mat const& marks, int kind, int neighbours, double largest, bool inside) {
    cv::Mat labels;
    cv::Mat stats;
    cv::Mat centroids;
    int const count = cv::connectedComponentsWithStats(mask, labels, stats, centroids, neighbours, CV_32S);
    std::vector<unsigned char> isFound(static_cast<std::size_t>(count), 255);
    isFound[0] = 0;
    for (int i = 1; i < count; ++i) {
        int const* const part = stats.ptr<int>(i);
        bool const isAtBorder = part[cv::CC_STAT_LEFT] == 0 || part[cv::CC_STAT_TOP] == 0 ||
                                part[cv::CC_STAT_LEFT] + part[cv::CC_STAT_WIDTH] == mask.cols ||
                                part[cv::CC_STAT_TOP] + part[cv::CC_STAT_HEIGHT] == mask.rows;
        if ((inside && isAtBorder) || part[cv::CC_STAT_AREA] > largest) isFound[static_cast<std::size_t>(i)] = 0;
    }
    auto const partAt = [&](int y, int x) { return static_cast<std::size_t>(labels.at<int>(y, x)); };
    for (int y = 0; y < mask.rows; ++y)
        for (int x = 0; x < mask.cols; ++x)
            if (marks.at<unsigned char>(y, x) == kind) isFound[partAt(y, x)] = 0;
    cv::Mat found(mask.size(), CV_8U);
    for (int y = 0; y < mask.rows; ++y)
        for (int x = 0; x < mask.cols; ++x) found.at<unsigned char>(y, x) = isFound[partAt(y, x)];
    return found;
}

/// 255 on the object, 0 elsewhere.
cv::Mat MakeObject(cv::Mat const& marks) {
    cv::Mat object = (marks & 1) != 0;
    object.setTo(0, FindUnmarked(object, marks, cv::GC_FGD, 8, static_cast<double>(object.total()), false));
    double const largest = LARGEST_HOLE * cv::countNonZero(object);
    object.setTo(255, FindUnmarked(object == 0, marks, cv::GC_BGD, 4, largest, true));
    return object;
}

} // namespace

class GrabCutSegmentation : public EffectBaseTwoInput<ITwoInputEffectVideo, SettingsEffectGrabCutSegmentation>,
                            public OnOpenCV {
public:
    GrabCutSegmentation(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseTwoInput(effectFactory, effectContext, ImplPhotoNames::OPENCV),
          converter(MakeOneInput(SettingsColorspaceConverter(std::vector<PixFmt>{PixFmt::BGR24, PixFmt::BGRA}, true))) {
    }

    void ProcessInternal(DataHandle& first, ConstDataHandle const& second) override {
        cv::Mat marks = ReadMarks(first->GetFrameFormat(), AsVideo(second));
        FrameFormat const frame = first->GetFrameFormat();
        VideoHandle const result = context->CreateImage(PixFmt::GRAY8, frame);
        result->CopyAttributes(*first);
        converter->ProcessData(first);
        cv::theRNG().state = SEED;
        Segment(ReadColours(AsVideo(first)), marks);
        cv::Mat target = ViewOf(result->GetMutablePlane(0), result->GetDescription().planes[0]);
        target.setTo(settings.GetBackground() & 255);
        target.setTo(settings.GetForeground() & 255, MakeObject(marks));
        first = result;
    }

private:
    /// Blue, green and red; what is clear has the colours around it.
    static cv::Mat ReadColours(IDataVideo const& picture) {
        if (!picture.GetDescription().hasAlpha) return ReadPlane(picture, 0);
        VideoHandle const covered = CopyCovered(picture);
        cv::Mat colours;
        cv::cvtColor(ReadPlane(*covered, 0), colours, cv::COLOR_BGRA2BGR);
        return colours;
    }

    /// The strokes in grabCut's numbers.
    cv::Mat ReadMarks(FrameFormat const& frame, IDataVideo const& strokes) const {
        if (strokes.GetPixFmt() != PixFmt::GRAY8)
            VELNOR_THROW(EffectException, "The strokes are a picture in " + std::string(strokes.GetDescription().name) +
                                              "; they must be in gray.");
        RequireOneSize("The strokes are", strokes.GetFrameFormat(), frame);
        int const foreground = settings.GetForeground() & 255;
        int const background = settings.GetBackground() & 255;
        if (foreground == background)
            VELNOR_THROW(EffectException, "The settings foreground and background are both " +
                                              std::to_string(foreground) + "; strokes of two values are needed.");
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
