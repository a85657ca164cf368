#include "Proc/Effects/Photo/OpenCV/GuidedSmooth.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace Velnor::Proc {
namespace {

/// Samples and their squares, or what a window keeps of them and what it adds: both weighted.
struct PlainSamples {
    unsigned char const* samples;
    float First(std::size_t i) const { return samples[i]; }
    float Second(std::size_t i) const { return First(i) * First(i); }
};
struct PlainModels {
    float const* keep;
    float const* base;
    float First(std::size_t i) const { return keep[i]; }
    float Second(std::size_t i) const { return base[i]; }
};
template <class Row>
struct Weighted {
    Row row;
    float const* weights;
    std::size_t channels;
    float Weight(std::size_t i) const { return weights[i / channels]; }
    float First(std::size_t i) const { return row.First(i) * Weight(i); }
    float Second(std::size_t i) const { return row.Second(i) * Weight(i); }
};

template <class Value>
void AddTo(std::vector<double>& sums, Value const& value) {
    double* const to = sums.data();
    std::size_t const count = sums.size();
    for (std::size_t i = 0; i < count; ++i) to[i] += value(i);
}

/// Sums over the rows of a window, for each column. In double: added to and taken from at every row, a float's would
/// drift, and those of 8-bit samples are exact.
struct ColumnSums {
    ColumnSums(std::size_t count, bool isWeighted) : first(count), second(count), weights(isWeighted ? count : 0) {}

    template <class Row>
    void Exchange(Row const& in, Row const& out) {
        AddTo(first, [=](std::size_t i) { return double{in.First(i)} - double{out.First(i)}; });
        AddTo(second, [=](std::size_t i) { return double{in.Second(i)} - double{out.Second(i)}; });
    }
    template <class Row>
    void Exchange(Weighted<Row> const& in, Weighted<Row> const& out) {
        Exchange<Weighted<Row>>(in, out);
        AddTo(weights, [=](std::size_t i) { return double{in.Weight(i)} - double{out.Weight(i)}; });
    }

    std::vector<double> first, second, weights;
};

class Smoother {
public:
    Smoother(cv::Mat const& plane, cv::Mat const& planeWeights, GuidedSmoothing const& how)
        : source(plane),
          weights(planeWeights),
          smoothing(how),
          channels(static_cast<std::size_t>(plane.channels())),
          count(static_cast<std::size_t>(plane.cols) * channels),
          heldRows(std::min(2 * how.reach.height + 2, plane.rows)),
          samples(count, !weights.empty()),
          models(samples),
          first(count),
          second(count),
          keep(count * static_cast<std::size_t>(heldRows)),
          base(keep.size()),
          noFloats(count),
          noBytes(count) {
        int const window = 2 * smoothing.reach.width + 1;
        for (int x = 0; x < source.cols + window; ++x)
            columns.push_back(channels * static_cast<std::size_t>(Mirror(x - smoothing.reach.width, source.cols)));
    }

    /// Writes what is kept of a row's samples, from 0 to 1, and what is added. Rows are asked for from first to last.
    void MakeRow(int y, float const*& kept, float const*& added) {
        for (; madeModels < std::min(y + smoothing.reach.height + 1, source.rows); ++madeModels) MakeModels(madeModels);
        Slide(models, y, [this](int row) {
            return row < 0 ? PlainModels{noFloats.data(), noFloats.data()} : Models(row);
        });
        MakeMeans(models);
        kept = first.data();
        added = second.data();
    }

private:
    static int Mirror(int at, int length) { return cv::borderInterpolate(at, length, cv::BORDER_REFLECT); }

    PlainModels Models(int y) const {
        std::size_t const at = static_cast<std::size_t>(y % heldRows) * count;
        return {keep.data() + at, base.data() + at};
    }

    void MakeModels(int y) {
        Slide(samples, y, [this](int row) { return PlainSamples{row < 0 ? noBytes.data() : source.ptr(row)}; });
        MakeMeans(samples);
        std::size_t const at = static_cast<std::size_t>(y % heldRows) * count;
        float* const share = keep.data() + at;
        float* const rest = base.data() + at;
        float const* const mean = first.data();
        float const* const square = second.data();
        auto const tolerance = static_cast<float>(smoothing.tolerance);
        for (std::size_t i = 0; i < count; ++i) {
            float const variance = std::max(square[i] - mean[i] * mean[i], 0.0F);
            // An even surface, where both are 0, stays as it is in any case.
            share[i] = variance / std::max(variance + tolerance, 1e-6F);
            rest[i] = mean[i] - share[i] * mean[i];
        }
    }

    /// Moves the window to row y from the one above it. `getRow` gives the samples of a row, or zeros for -1.
    template <class GetRow>
    void Slide(ColumnSums& sums, int y, GetRow const& getRow) const {
        int const reach = smoothing.reach.height;
        auto const exchange = [&](int in, int out) {
            if (weights.empty())
                sums.Exchange(getRow(in), getRow(out));
            else
                sums.Exchange(WithWeights(getRow(in), in), WithWeights(getRow(out), out));
        };
        if (y > 0) return exchange(Mirror(y + reach, source.rows), Mirror(y - reach - 1, source.rows));
        for (int row = -reach; row <= reach; ++row) exchange(Mirror(row, source.rows), -1);
    }

    template <class Row>
    Weighted<Row> WithWeights(Row const& row, int y) const {
        return {row, y < 0 ? noFloats.data() : weights.ptr<float>(y), channels};
    }

    void MakeMeans(ColumnSums const& sums) {
        MakeMeans(sums.first, first);
        MakeMeans(sums.second, second);
        if (sums.weights.empty()) return;
        std::vector<float> total(count);
        MakeMeans(sums.weights, total);
        for (std::size_t i = 0; i < count; ++i) {
            first[i] /= total[i];
            second[i] /= total[i];
        }
    }

    void MakeMeans(std::vector<double> const& sums, std::vector<float>& means) const {
        auto const window = static_cast<std::size_t>(2 * smoothing.reach.width + 1);
        double const share = 1.0 / static_cast<double>(smoothing.reach.height * 2 + 1) / static_cast<double>(window);
        for (std::size_t k = 0; k < channels; ++k) {
            double const* const from = sums.data() + k;
            double sum = 0;
            for (std::size_t x = 0; x < window; ++x) sum += from[columns[x]];
            float* to = means.data() + k;
            for (std::size_t x = 0; x + window < columns.size(); ++x, to += channels) {
                *to = static_cast<float>(sum * share);
                sum += from[columns[x + window]] - from[columns[x]];
            }
        }
    }

    cv::Mat const source;
    cv::Mat const weights;
    GuidedSmoothing const smoothing;
    std::size_t const channels;
    std::size_t const count; ///< Samples of a row.
    int const heldRows;      ///< Of the models: a window's, and the one that leaves it.
    ColumnSums samples, models;
    std::vector<float> first, second; ///< Means of a row.
    std::vector<float> keep, base;    ///< Models, row y at y % heldRows.
    std::vector<float> const noFloats;
    std::vector<unsigned char> const noBytes;
    std::vector<std::size_t> columns; ///< Where the sums of a mirrored row are.
    int madeModels = 0;
};

/// What a gaussian takes away, strip by strip.
class Detail {
public:
    Detail(cv::Mat const& plane, cv::Mat const& planeWeights) : source(plane), weights(planeWeights) {}

    /// Rows are asked for from first to last.
    float const* GetRow(int y) {
        if (y >= end) MakeStrip(y);
        return detail.ptr<float>(y - begin);
    }

private:
    static constexpr int STRIP_ROWS = 128;
    static constexpr double DEVIATION = 1.5; ///< In pixels.
    static constexpr int REACH = 6;          ///< Of the gaussian.

    void MakeStrip(int y) {
        begin = std::max(y - REACH, 0);
        end = std::min(y + STRIP_ROWS, source.rows);
        cv::Range const rows(begin, std::min(end + REACH, source.rows));
        source.rowRange(rows).convertTo(detail, CV_32F);
        if (weights.empty()) {
            detail -= Blur(detail);
            return;
        }
        cv::Mat spread;
        cv::merge(std::vector<cv::Mat>(static_cast<std::size_t>(source.channels()), weights.rowRange(rows)), spread);
        detail -= Blur(detail.mul(spread)) / Blur(spread);
    }

    static cv::Mat Blur(cv::Mat const& samples) {
        cv::Mat blurred;
        cv::GaussianBlur(samples, blurred, {2 * REACH + 1, 2 * REACH + 1}, DEVIATION, DEVIATION,
                         cv::BORDER_REFLECT | cv::BORDER_ISOLATED);
        return blurred;
    }

    cv::Mat const source;
    cv::Mat const weights;
    cv::Mat detail;
    int begin = 0; ///< The picture's row in the strip's first.
    int end = 0;   ///< Behind the last that is right.
};

} // namespace

void SmoothGuided(cv::Mat const& source, cv::Mat const& weights, cv::Mat& target, GuidedSmoothing const& smoothing) {
    Smoother smoother(source, weights, smoothing);
    Detail detail(source, weights);
    cv::Mat result(1, source.cols, CV_32FC(source.channels()));
    auto const sharpen = static_cast<float>(smoothing.sharpen);
    auto const count = static_cast<std::size_t>(source.cols) * static_cast<std::size_t>(source.channels());
    for (int y = 0; y < source.rows; ++y) {
        float const* kept = nullptr;
        float const* added = nullptr;
        smoother.MakeRow(y, kept, added);
        unsigned char const* const value = source.ptr(y);
        float* const to = result.ptr<float>(0);
        for (std::size_t i = 0; i < count; ++i) to[i] = added[i] + kept[i] * static_cast<float>(value[i]);
        if (smoothing.sharpen > 0) {
            float const* const fine = detail.GetRow(y);
            for (std::size_t i = 0; i < count; ++i) to[i] += sharpen * fine[i] * kept[i];
        }
        cv::Mat row = target.row(y);
        result.convertTo(row, CV_8U);
    }
}

} // namespace Velnor::Proc
