#include "Proc/Effects/General/Kernels/RemapRows.h"

#include "Tests/Support/ColourPictures.h"
#include "Tests/Support/Pictures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Velnor::Proc::Kernels {
namespace {

using namespace Testing;

struct Place {
    float x, y;
};

RowTaps Split(std::vector<Place> const& places, std::uint32_t width, std::uint32_t height) {
    std::vector<float> x;
    std::vector<float> y;
    for (Place const& place : places) {
        x.push_back(place.x);
        y.push_back(place.y);
    }
    RowTaps taps(places.size());
    SplitPositions(x.data(), y.data(), width, height, taps);
    return taps;
}

TEST(RemapRows, PositionsOutsideGoToTheNearestEdgeAndNoNumberToTheFirstSample) {
    constexpr float INF = std::numeric_limits<float>::infinity();
    constexpr float NAN_VALUE = std::numeric_limits<float>::quiet_NaN();
    struct Case {
        float position;
        int index;
        float weight;
    };
    std::vector<Case> const cases{{-0.5F, 0, 0}, {-INF, 0, 0}, {NAN_VALUE, 0, 0}, {0, 0, 0},     {2.25F, 2, 0.25F},
                                  {3, 3, 0},     {4, 3, 1},    {4.75F, 3, 1},     {1e30F, 3, 1}, {INF, 3, 1}};
    std::vector<Place> places;
    for (Case const& one : cases) places.push_back({one.position, one.position});
    RowTaps const taps = Split(places, 5, 1);
    for (std::size_t i = 0; i < cases.size(); ++i) {
        EXPECT_EQ(taps.column[i], cases[i].index) << cases[i].position;
        EXPECT_EQ(taps.right[i], cases[i].weight) << cases[i].position;
        EXPECT_EQ(taps.row[i], 0); // of a single row
        EXPECT_EQ(taps.lower[i], 0);
    }
}

/// Independent of the kernel: four samples and doubles.
int Expected(ConstPlane const& plane, unsigned int bytes, Place const& at, unsigned int k) {
    double const lastX = static_cast<double>(plane.GetWidth() / bytes) - 1;
    double const lastY = static_cast<double>(plane.GetHeight()) - 1;
    double const x = std::clamp(static_cast<double>(at.x), 0.0, lastX);
    double const y = std::clamp(static_cast<double>(at.y), 0.0, lastY);
    auto const sample = [&](double column, double row) {
        return double{1.0 * plane.GetRow(static_cast<std::uint64_t>(std::min(
                                row, lastY)))[static_cast<std::uint64_t>(std::min(column, lastX)) * bytes + k]};
    };
    double const left = std::floor(x);
    double const top = std::floor(y);
    double const upper = std::lerp(sample(left, top), sample(left + 1, top), x - left);
    double const lower = std::lerp(sample(left, top + 1), sample(left + 1, top + 1), x - left);
    return static_cast<int>(std::lerp(upper, lower, y - top) + 0.5);
}

TEST(RemapRows, AllSampleSizesReadNoByteTooManyAndInterpolateExactly) {
    ContextHandle const context = CreateContext();
    PixFmt const formats[] = {PixFmt::GRAY8, PixFmt::YA8, PixFmt::RGB24, PixFmt::RGBA};
    for (unsigned int bytes = 1; bytes <= 4; ++bytes)
        for (auto const& [width, height] : {std::pair{1U, 1U}, {1U, 6U}, {2U, 1U}, {7U, 1U}, {3U, 2U}, {37U, 11U}})
            for (bool const isBottomUp : {false, true}) {
                FencedPicture const fenced(*MakeNoise(*context, formats[bytes - 1], width, height), isBottomUp);
                VideoHandle const picture = fenced.Wrap(*context);
                ConstPlane const plane = picture->GetPlane(0);
                std::vector<Place> places;
                for (unsigned int i = 0; i < 203; ++i)
                    places.push_back(
                        {static_cast<float>(i * 7919U % 1000U) / 1000 * static_cast<float>(width + 1) - 1,
                         static_cast<float>(i * 104729U % 997U) / 997 * static_cast<float>(height + 1) - 1});
                RowTaps const taps = Split(places, width, height);
                std::vector<unsigned char> fast(places.size() * bytes + 5, 0x5a);
                std::vector<unsigned char> slow = fast;
                SampleRow(plane, bytes, taps, fast.data());
                SampleRowScalar(plane, bytes, taps, slow.data());
                SCOPED_TRACE(std::to_string(bytes) + " bytes, " + std::to_string(width) + " x " +
                             std::to_string(height));
                EXPECT_EQ(fast, slow);
                for (std::size_t i = 0; i < places.size(); ++i)
                    for (unsigned int k = 0; k < bytes; ++k)
                        EXPECT_NEAR(slow[i * bytes + k], Expected(plane, bytes, places[i], k), 1) << i;
                EXPECT_EQ(std::vector<unsigned char>(slow.end() - 5, slow.end()), std::vector<unsigned char>(5, 0x5a));
            }
}

} // namespace
} // namespace Velnor::Proc::Kernels
