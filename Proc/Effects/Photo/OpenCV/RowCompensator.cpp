#include "Proc/Effects/Photo/OpenCV/RowCompensator.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>

namespace Velnor::Proc {
namespace {

void Multiply(cv::Mat& samples, int y, cv::Mat const& gains) {
    double const place = (y + 0.5) * gains.rows / samples.rows - 0.5;
    int const above = std::clamp(static_cast<int>(std::floor(place)), 0, gains.rows - 1);
    auto const share = static_cast<float>(std::clamp(place - above, 0.0, 1.0));
    float const* const upper = gains.ptr<float>(above);
    float const* const lower = gains.ptr<float>(std::min(above + 1, gains.rows - 1));
    unsigned char* to = samples.ptr(y);
    for (int x = 0; x < samples.cols; ++x) {
        float const gain = upper[x] * (1 - share) + lower[x] * share;
        for (int k = 0; k < 3; ++k, ++to) *to = cv::saturate_cast<unsigned char>(static_cast<float>(*to) * gain);
    }
}

} // namespace

void RowCompensator::apply(int index, cv::Point, cv::InputOutputArray image, cv::InputArray) {
    CV_Assert(image.type() == CV_8UC3);
    std::vector<cv::Mat> gains;
    getMatGains(gains);
    cv::Mat const& blocks = gains.at(static_cast<std::size_t>(index));
    cv::Mat wide;
    cv::resize(blocks, wide, {image.cols(), blocks.rows}, 0, 0, cv::INTER_LINEAR);
    cv::Mat samples = image.getMat();
    for (int y = 0; y < samples.rows; ++y) Multiply(samples, y, wide);
}

} // namespace Velnor::Proc
