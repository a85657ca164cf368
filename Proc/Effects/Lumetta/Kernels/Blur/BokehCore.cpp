#include "Proc/Effects/Lumetta/Kernels/Blur/BokehCore.h"

#include "Proc/Effects/Lumetta/Kernels/Blur/BokehCoreX86.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Velnor::Proc::Kernels {
namespace {

constexpr std::size_t CHANNELS = 3;
constexpr std::size_t LENGTH_UNIT = 8; ///< Floats: the buffer's length is a multiple.

std::array<float, 256> MakeAmplification(double threshold, double gain) {
    std::array<float, 256> values;
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = Amplify(static_cast<unsigned char>(i), static_cast<float>(threshold), static_cast<float>(gain));
    return values;
}

/// The columns beside a row of `pixels` pixels.
void MirrorSides(float* first, std::size_t pixels, std::size_t left, std::size_t right) {
    float const* const last = first + (pixels - 1) * CHANNELS;
    for (std::size_t m = 1; m <= left; ++m) std::copy_n(first + m * CHANNELS, CHANNELS, first - m * CHANNELS);
    for (std::size_t d = 1; d <= right; ++d)
        std::copy_n(last - d * CHANNELS, CHANNELS, first + (pixels - 1 + d) * CHANNELS);
}

/// The rows above and below. The plain mirror comes first: the rows anchored at the end leave the row below the picture
/// (where the kernel's height is odd) or the start of the topmost of them (where the length was rounded up) unwritten.
void MirrorEnds(PaddedPicture& picture, std::size_t kernelHeight) {
    std::size_t const stride = picture.stride;
    std::size_t const above = kernelHeight / 2;
    float* const values = picture.values.data();
    float* const first = values + above * stride;
    float* const last = first + (picture.rows - 1) * stride;
    for (std::size_t m = 1; m <= above; ++m) std::copy_n(first + m * stride, stride, first - m * stride);
    for (std::size_t d = 1; d <= kernelHeight - above; ++d) std::copy_n(last - d * stride, stride, last + d * stride);

    float* target = values + picture.values.size() - stride;
    float const* source = target - (kernelHeight + (kernelHeight & 1)) * stride;
    for (std::size_t j = 0; j < above; ++j, target -= stride, source += stride) std::copy_n(source, stride, target);
}

#ifdef VELNOR_X86
/// The weights of one kernel column for the rows summed side by side, when this row of samples is `row` below the
/// first.
std::array<float, BOKEH_ROWS> FindWeights(BokehKernel const& kernel, std::size_t row, std::size_t column) {
    std::array<float, BOKEH_ROWS> weights{};
    for (std::size_t r = 0; r < BOKEH_ROWS && r <= row; ++r)
        if (row - r < kernel.height) weights[r] = kernel.weights[(row - r) * kernel.width + column];
    return weights;
}

BokehRuns MakeRuns(BokehKernel const& kernel) {
    BokehRuns result;
    for (std::size_t row = 0; row < kernel.height + BOKEH_ROWS - 1; ++row) {
        bool isInside = false;
        for (std::size_t column = 0; column < kernel.width; ++column) {
            auto const weights = FindWeights(kernel, row, column);
            bool const hasWeight = std::ranges::any_of(weights, [](float weight) { return weight != 0; });
            if (hasWeight && !isInside) result.runs.push_back({row, column, 0, result.weights.size()});
            isInside = hasWeight;
            if (!hasWeight) continue;
            ++result.runs.back().count;
            result.weights.insert(result.weights.end(), weights.begin(), weights.end());
        }
    }
    return result;
}

/// How rows are summed in blocks; not at all, by null.
struct Entry {
    void (*sum)(PaddedPicture const&, BokehRuns const&, float*) = nullptr;
    std::size_t const* blockSamples = nullptr;
};

constexpr Variants BLOCKS{Variant{Target::Scalar, Entry{}},
                          Variant{Target::Sse2, Entry{&BokehSse2::SumRows, &BokehSse2::BLOCK_SAMPLES}},
                          Variant{Target::Avx2, Entry{&BokehAvx2::SumRows, &BokehAvx2::BLOCK_SAMPLES}},
                          Variant{Target::Avx512, Entry{&BokehAvx512::SumRows, &BokehAvx512::BLOCK_SAMPLES}}};

/// In blocks a weight of 0 is multiplied where a neighbouring row has one: 0 must come of it.
bool AreHarmless(std::vector<float> const& values) {
    return std::ranges::all_of(values, [](float value) { return std::isfinite(value) && !std::signbit(value); });
}
#else
constexpr Variants BLOCKS{Variant{Target::Scalar, nullptr}};
#endif

} // namespace

float Amplify(unsigned char sample, float threshold, float gain) {
    float const value = static_cast<float>(sample) / 255.0F;
    return value > threshold ? value * gain : value;
}

BokehKernel MakeBokehKernel(ConstPlane const& shape, double threshold, double gain) {
    std::array<float, 256> const amplified = MakeAmplification(threshold, gain);
    BokehKernel kernel;
    kernel.width = static_cast<std::uint32_t>(shape.GetWidth());
    kernel.height = static_cast<std::uint32_t>(shape.GetHeight());
    kernel.weights.resize(shape.GetWidth() * shape.GetHeight());
    auto next = kernel.weights.rbegin();
    for (std::uint64_t y = 0; y < shape.GetHeight(); ++y)
        for (std::uint64_t x = 0; x < shape.GetWidth(); ++x) {
            float const weight = amplified[shape.GetRow(y)[x]];
            *next++ = weight;
            kernel.sum += weight;
        }
    return kernel;
}

PaddedPicture PadPicture(ConstPlane const& picture, BokehKernel const& kernel, double threshold, double gain) {
    std::array<float, 256> const amplified = MakeAmplification(threshold, gain);
    std::size_t const pixels = picture.GetWidth() / CHANNELS;
    std::size_t const left = kernel.width / 2;
    PaddedPicture padded;
    padded.samples = pixels * CHANNELS;
    padded.rows = picture.GetHeight();
    padded.stride = (kernel.width + pixels) * CHANNELS;
    padded.origin = kernel.height / 2 * padded.stride + left * CHANNELS;
    std::size_t const length = (kernel.height + padded.rows) * padded.stride;
    padded.values.resize((length + LENGTH_UNIT - 1) / LENGTH_UNIT * LENGTH_UNIT);
    for (std::size_t y = 0; y < padded.rows; ++y) {
        unsigned char const* const from = picture.GetRow(y);
        float* const to = padded.values.data() + padded.origin + y * padded.stride;
        for (std::size_t i = 0; i < padded.samples; ++i) to[i] = amplified[from[i]];
        MirrorSides(to, pixels, left, kernel.width - left);
    }
    MirrorEnds(padded, kernel.height);
    return padded;
}

std::vector<float> ConvolvePlain(PaddedPicture const& picture, BokehKernel const& kernel) {
    std::vector<float> sums(picture.samples * picture.rows);
    for (std::size_t y = 0; y < picture.rows; ++y)
        std::copy_n(picture.values.data() + picture.origin + y * picture.stride, picture.samples,
                    sums.data() + y * picture.samples);
    for (std::size_t ky = 0; ky < kernel.height; ++ky)
        for (std::size_t kx = 0; kx < kernel.width; ++kx) {
            float const weight = kernel.weights[ky * kernel.width + kx];
            if (weight == 0) continue;
            for (std::size_t y = 0; y < picture.rows; ++y) {
                float const* const from = picture.values.data() + (ky + y) * picture.stride + kx * CHANNELS;
                float* const to = sums.data() + y * picture.samples;
                for (std::size_t i = 0; i < picture.samples; ++i) to[i] += weight * from[i];
            }
        }
    return sums;
}

std::vector<Target> SupportedBokehTargets() { return BLOCKS.ListTargets(); }

std::vector<float> ConvolveWith(Target target, PaddedPicture const& picture, BokehKernel const& kernel) {
    RequireTarget(target);
#ifdef VELNOR_X86
    Entry const entry = BLOCKS.Choose(target);
    bool const isLargeEnough =
        entry.sum != nullptr && picture.rows >= BOKEH_ROWS && picture.samples >= *entry.blockSamples;
    if (isLargeEnough && AreHarmless(picture.values)) {
        std::vector<float> sums(picture.samples * picture.rows);
        entry.sum(picture, MakeRuns(kernel), sums.data());
        return sums;
    }
#endif
    return ConvolvePlain(picture, kernel);
}

std::vector<float> Convolve(PaddedPicture const& picture, BokehKernel const& kernel) {
    return ConvolveWith(UsedTarget(), picture, kernel);
}

void WriteLevels(std::vector<float> const& sums, float kernelSum, MutablePlane const& target) {
    float const* value = sums.data();
    for (std::uint64_t y = 0; y < target.GetHeight(); ++y) {
        unsigned char* const to = target.GetRow(y);
        for (std::uint64_t i = 0; i < target.GetWidth(); ++i) {
            double const level = *value++ * 255.0F / kernelSum + 0.5;
            to[i] = !(level > 0) ? 0 : level >= 255 ? 255 : static_cast<unsigned char>(level);
        }
    }
}

} // namespace Velnor::Proc::Kernels
