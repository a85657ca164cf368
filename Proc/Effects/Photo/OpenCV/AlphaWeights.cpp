#include "Proc/Effects/Photo/OpenCV/AlphaWeights.h"

#include "Proc/Effects/Kit/ClearColours.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <vector>

namespace Velnor::Proc {
namespace {

constexpr double TRACE = 0.001;  ///< Levels of alpha.
constexpr float LEAST = 0.0005F; ///< Of a sum of weights, which negative lobes may take below.

} // namespace

cv::Mat MakeAlphaWeights(IDataVideo const& picture, unsigned char plane) {
    PixFmtDescription const& format = picture.GetDescription();
    PlaneLayout const& layout = format.planes[plane];
    ConstPlane const alpha = FindClearAlpha(picture);
    if (alpha.IsEmpty() || (plane == format.alpha.plane && layout.bytes == 1)) return {};
    FrameFormat const frame = picture.GetFrameFormat();
    cv::Mat weights(static_cast<int>(frame.height), static_cast<int>(frame.width), CV_32F);
    for (int y = 0; y < weights.rows; ++y) {
        unsigned char const* const from = alpha.GetRow(static_cast<std::uint64_t>(y));
        for (int x = 0; x < weights.cols; ++x)
            weights.at<float>(y, x) = from[static_cast<std::uint64_t>(x) * alpha.GetSampleBytes()];
    }
    int const groupX = 1 << layout.shiftX;
    int const groupY = 1 << layout.shiftY;
    if (groupX > 1 || groupY > 1) {
        cv::Mat whole;
        int const right = (groupX - weights.cols % groupX) % groupX;
        int const below = (groupY - weights.rows % groupY) % groupY;
        cv::copyMakeBorder(weights, whole, 0, below, 0, right, cv::BORDER_REPLICATE);
        cv::resize(whole, weights, {whole.cols / groupX, whole.rows / groupY}, 0, 0, cv::INTER_AREA);
    }
    return weights + TRACE;
}

void BlurWeighted(cv::Mat const& source, cv::Mat const& weights, int alphaChannel, LinearBlur const& blur,
                  cv::Mat& target) {
    int const channels = source.channels();
    cv::Mat colours;
    source.convertTo(colours, CV_32F);
    cv::Mat spread;
    cv::merge(std::vector<cv::Mat>(static_cast<std::size_t>(channels), weights), spread);
    cv::Mat const sums = blur(colours.mul(spread));
    cv::Mat const totals = blur(weights);
    for (int y = 0; y < sums.rows; ++y) {
        float const* from = sums.ptr<float>(y);
        float const* const total = totals.ptr<float>(y);
        unsigned char* to = target.ptr<unsigned char>(y);
        for (int x = 0; x < sums.cols; ++x, from += channels, to += channels)
            for (int k = 0; k < channels; ++k)
                if (k != alphaChannel)
                    to[k] = static_cast<unsigned char>(
                        std::clamp(from[k] / std::max(total[x], LEAST) + 0.5F, 0.0F, 255.0F));
    }
}

} // namespace Velnor::Proc
