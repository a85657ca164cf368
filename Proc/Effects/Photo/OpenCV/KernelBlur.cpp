#include "Proc/Effects/Photo/OpenCV/KernelBlur.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>

namespace Velnor::Proc {
namespace {

/// Samples that are taken together along an axis: a power of two, small against the kernel's deviation and half-width.
/// A kernel that ends abruptly is blurred at its ends by as much as a block, hence the second bound.
int BlockSize(HalfKernel const& kernel, int samples) {
    double weights = kernel[0];
    double squares = 0;
    for (std::size_t i = 1; i < kernel.size(); ++i) {
        weights += 2.0 * kernel[i];
        squares += 2.0 * kernel[i] * static_cast<double>(i * i);
    }
    double const limit = std::min(std::sqrt(squares / weights) / 8.0, static_cast<double>(kernel.size()) / 32.0);
    int block = 1;
    while (2 * block <= limit && 2 * block <= samples) block *= 2;
    return block;
}

/// The whole kernel on blocks, its sum 1: the weight at a distance of whole blocks is the integral of the fine kernel
/// over a block there.
cv::Mat BlockKernel(HalfKernel const& kernel, int block) {
    int const fine = static_cast<int>(kernel.size()) - 1;
    int const coarse = (fine + block / 2) / block;
    cv::Mat weights = cv::Mat::zeros(1, 2 * coarse + 1, CV_32F);
    for (int x = -fine; x <= fine; ++x) {
        // A sample stands for its own width, half of which may fall into the next block.
        float const half = kernel[static_cast<std::size_t>(std::abs(x))] / 2;
        for (double const at : {x - 0.25, x + 0.25}) {
            int const place = static_cast<int>(std::floor(at / block + 0.5));
            weights.at<float>(0, std::clamp(place, -coarse, coarse) + coarse) += half;
        }
    }
    return weights / cv::sum(weights)[0];
}

/// The factor of each place along an axis that makes up for the weights outside of the picture.
std::vector<float> MakeFactors(cv::Mat const& weights) {
    std::vector<float> factors(weights.total());
    for (std::size_t i = 0; i < factors.size(); ++i) factors[i] = 1.0F / weights.ptr<float>(0)[i];
    return factors;
}

void WriteMeans(cv::Mat const& sums, std::vector<float> const& acrossFactors, std::vector<float> const& downFactors,
                cv::Mat& target) {
    auto const channels = static_cast<std::size_t>(sums.channels());
    std::vector<float> factors(acrossFactors.size() * channels);
    for (std::size_t i = 0; i < factors.size(); ++i) factors[i] = acrossFactors[i / channels];
    for (int y = 0; y < sums.rows; ++y) {
        float const* const from = sums.ptr<float>(y);
        unsigned char* const to = target.ptr<unsigned char>(y);
        float const factor = downFactors[static_cast<std::size_t>(y)];
        // Means of bytes are bytes: there is nothing to clamp but a rounding error above 255.
        for (std::size_t i = 0; i < factors.size(); ++i)
            to[i] = static_cast<unsigned char>(std::min(from[i] * factors[i] * factor + 0.5F, 255.0F));
    }
}

} // namespace

HalfKernel MakeGaussianKernel(double deviation, int halfWidth) {
    HalfKernel kernel{1.0F};
    for (int x = 1; x <= halfWidth && deviation > 0; ++x)
        kernel.push_back(static_cast<float>(std::exp(-x * x / (2 * deviation * deviation))));
    return kernel;
}

HalfKernel MakeTriangleKernel(int halfWidth) {
    HalfKernel kernel;
    for (int x = 0; x <= halfWidth; ++x) kernel.push_back(static_cast<float>(halfWidth + 1 - x));
    return kernel;
}

cv::Mat SumByKernels(cv::Mat const& source, HalfKernel const& across, HalfKernel const& down) {
    int const blockX = BlockSize(across, source.cols);
    int const blockY = BlockSize(down, source.rows);
    cv::Mat const kernelX = BlockKernel(across, blockX);
    cv::Mat const kernelY = BlockKernel(down, blockY);
    int const border = cv::BORDER_CONSTANT | cv::BORDER_ISOLATED;
    cv::Mat sums;
    if (blockX == 1 && blockY == 1) {
        cv::sepFilter2D(source, sums, CV_32F, kernelX, kernelY, {-1, -1}, 0, border);
        return sums;
    }
    int const right = (blockX - source.cols % blockX) % blockX;
    int const below = (blockY - source.rows % blockY) % blockY;
    cv::Mat whole = source;
    if (right != 0 || below != 0) cv::copyMakeBorder(source, whole, 0, below, 0, right, border, cv::Scalar::all(0));
    cv::Mat blocks;
    // 8-bit means would round before the blur: sums of rows or blocks are kept as they are.
    cv::Mat wide;
    whole.convertTo(wide, CV_32F);
    cv::resize(wide, blocks, {whole.cols / blockX, whole.rows / blockY}, 0, 0, cv::INTER_AREA);
    cv::sepFilter2D(blocks, sums, CV_32F, kernelX, kernelY, {-1, -1}, 0, border);
    cv::resize(sums, wide, whole.size(), 0, 0, cv::INTER_LINEAR);
    return wide(cv::Rect(0, 0, source.cols, source.rows));
}

cv::Mat SumByBox(cv::Mat const& source, int halfWidthX, int halfWidthY) {
    // Beyond the picture's own size a box is the whole picture.
    cv::Size const size(2 * std::min(halfWidthX, source.cols) + 1, 2 * std::min(halfWidthY, source.rows) + 1);
    cv::Mat means;
    cv::boxFilter(source, means, CV_32F, size, {-1, -1}, true, cv::BORDER_CONSTANT | cv::BORDER_ISOLATED);
    return means;
}

void BlurByKernels(cv::Mat const& source, cv::Mat& target, HalfKernel const& across, HalfKernel const& down) {
    HalfKernel const none{1.0F};
    cv::Mat const columns = SumByKernels(cv::Mat::ones(1, source.cols, CV_8U), across, none);
    cv::Mat const rows = SumByKernels(cv::Mat::ones(1, source.rows, CV_8U), down, none);
    WriteMeans(SumByKernels(source, across, down), MakeFactors(columns), MakeFactors(rows), target);
}

void BlurByBox(cv::Mat const& source, cv::Mat& target, int halfWidthX, int halfWidthY) {
    cv::Mat const columns = SumByBox(cv::Mat::ones(1, source.cols, CV_32F), halfWidthX, 0);
    cv::Mat const rows = SumByBox(cv::Mat::ones(1, source.rows, CV_32F), halfWidthY, 0);
    WriteMeans(SumByBox(source, halfWidthX, halfWidthY), MakeFactors(columns), MakeFactors(rows), target);
}

} // namespace Velnor::Proc
