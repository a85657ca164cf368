#include "Proc/Effects/Photo/OpenCV/DiscMorphology.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>

namespace Velnor::Proc {
namespace {

/// Rows at a time, so that what a disc needs of them stays in the cache.
constexpr int STRIP_ROWS = 64;

/// A disc is a stack of segments, one for each row. They are taken from the poles to the equator: each is longer than
/// the one before and is made of it, so that a row costs a few operations however long its segment is.
template <class Pick>
class DiscFilter {
public:
    DiscFilter(int discRadius, Pick const& pickOne) : radius(discRadius), pick(pickOne) {}

    /// @param extended  rows with `radius` neutral samples on each side, and as many rows above and below
    /// @param target    as many samples as `extended` without the margin
    void Run(cv::Mat const& extended, cv::Mat& target) {
        extended.copyTo(segments);
        int half = 0;
        bool isFirst = true;
        for (int y = radius; y >= 0; --y) {
            auto const wanted = static_cast<int>(std::sqrt(static_cast<double>(radius * radius - y * y)));
            for (; half < wanted; half = Widen(half, wanted)) {
            }
            for (int const row : {radius - y, radius + y}) {
                cv::Mat const shifted = segments(cv::Rect(radius, row, target.cols, target.rows));
                if (isFirst)
                    shifted.copyTo(target);
                else
                    pick(target, shifted, target);
                isFirst = false;
            }
        }
    }

private:
    /// Segments of 2 half + 1 samples become those of 2 (half + step) + 1. Near the margin's ends, where nobody looks,
    /// they stay short.
    int Widen(int half, int wanted) {
        int const step = std::min(wanted - half, half + 1);
        int const columns = segments.cols - 2 * step;
        cv::Mat const left = segments(cv::Rect(0, 0, columns, segments.rows));
        cv::Mat const right = segments(cv::Rect(2 * step, 0, columns, segments.rows));
        segments.copyTo(wider);
        cv::Mat middle = wider(cv::Rect(step, 0, columns, segments.rows));
        pick(left, right, middle);
        if (half < step) pick(middle, segments(cv::Rect(step, 0, columns, segments.rows)), middle);
        std::swap(segments, wider);
        return half + step;
    }

    int radius;
    Pick pick;
    cv::Mat segments;
    cv::Mat wider;
};

template <class Pick>
void RunDisc(cv::Mat& samples, int wantedRadius, int neutral, Pick const& pick) {
    // A larger disc covers the whole picture from any place in it.
    auto const diagonal = static_cast<int>(std::ceil(std::hypot(samples.cols, samples.rows)));
    int const radius = std::min(wantedRadius, diagonal);
    if (radius <= 0) return;
    cv::Mat extended;
    cv::copyMakeBorder(samples, extended, radius, radius, radius, radius, cv::BORDER_CONSTANT | cv::BORDER_ISOLATED,
                       cv::Scalar::all(neutral));
    DiscFilter<Pick> filter(radius, pick);
    for (int y = 0; y < samples.rows; y += STRIP_ROWS) {
        int const rows = std::min(STRIP_ROWS, samples.rows - y);
        cv::Mat target = samples.rowRange(y, y + rows);
        filter.Run(extended.rowRange(y, y + rows + 2 * radius), target);
    }
}

} // namespace

void ErodeByDisc(cv::Mat& samples, int radius) {
    RunDisc(samples, radius, 255, [](cv::Mat const& a, cv::Mat const& b, cv::Mat& to) { cv::min(a, b, to); });
}

void DilateByDisc(cv::Mat& samples, int radius) {
    RunDisc(samples, radius, 0, [](cv::Mat const& a, cv::Mat const& b, cv::Mat& to) { cv::max(a, b, to); });
}

} // namespace Velnor::Proc
