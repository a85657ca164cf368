#include "Proc/Effects/Photo/OpenCV/StripBlender.h"

#include <algorithm>

namespace Velnor::Proc {
namespace {

constexpr int BANDS = 5;
/// A sample of the coarsest band. Strips begin at a multiple, where the bands of the whole have samples too.
constexpr int COARSEST = 1 << BANDS;
/// On the way down to a band its reach doubles with each, from 2 samples, and so it does on the way up.
constexpr int INFLUENCE = 4 * COARSEST;
/// Few enough that the bands are small beside the pictures, and many beside the rows that are blended twice.
constexpr int STRIP_SAMPLES = 1 << 21;

int StripRows(int width) {
    int const rows = STRIP_SAMPLES / width / COARSEST * COARSEST;
    return std::max(rows, INFLUENCE);
}

} // namespace

void StripBlender::prepare(cv::Rect wanted) {
    area = wanted;
    pictures.clear();
    result.release();
    coverage.release();
}

void StripBlender::feed(cv::InputArray image, cv::InputArray mask, cv::Point corner) {
    Picture picture;
    image.getMat().convertTo(picture.samples, CV_8U);
    mask.copyTo(picture.mask);
    picture.corner = corner - area.tl();
    pictures.push_back(picture);
}

void StripBlender::blend(cv::InputOutputArray, cv::InputOutputArray) {
    result.create(area.size(), CV_8UC3);
    coverage.create(area.size(), CV_8U);
    int const step = StripRows(area.width);
    for (int y = 0; y < area.height; y += step) BlendStrip({y, std::min(y + step, area.height)});
    pictures.clear();
}

void StripBlender::BlendStrip(cv::Range rows) {
    cv::Range const around(std::max(rows.start - INFLUENCE, 0), std::min(rows.end + INFLUENCE, area.height));
    cv::detail::MultiBandBlender blender(false, BANDS);
    blender.prepare(cv::Rect(0, around.start, area.width, around.size()));
    for (Picture const& picture : pictures) {
        int const top = picture.corner.y;
        cv::Range const there = around & cv::Range(top, top + picture.samples.rows);
        if (there.empty()) continue;
        cv::Range const own(there.start - top, there.end - top);
        cv::Mat const mask = picture.mask.rowRange(own);
        if (cv::countNonZero(mask) == 0) continue;
        cv::Mat samples;
        picture.samples.rowRange(own).convertTo(samples, CV_16S);
        blender.feed(samples, mask, {picture.corner.x, there.start});
    }
    cv::Mat blended;
    cv::Mat covered;
    blender.blend(blended, covered);
    cv::Range const inner(rows.start - around.start, rows.end - around.start);
    cv::Mat target = result.rowRange(rows);
    blended.rowRange(inner).convertTo(target, CV_8U);
    covered.rowRange(inner).copyTo(coverage.rowRange(rows));
}

} // namespace Velnor::Proc
