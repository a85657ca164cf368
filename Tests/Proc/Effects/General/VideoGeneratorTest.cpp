#include "Proc/Settings/SettingsEffectVideoGenerator.h"

#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/Pictures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <numeric>

namespace Velnor::Proc {
namespace {

using namespace Testing;
using S = SettingsEffectVideoGenerator;

class VideoGeneratorTest : public ::testing::Test {
protected:
    VideoHandle Make(SettingsEffectVideoGenerator const& settings, DataHandle data = nullptr) {
        auto const effect =
            host.GetFactory()->CreateOneInputEffect(SettingsEffectVideoGenerator::CLASS_ID, ImplNames::DEFAULT);
        effect->SetSettings(settings);
        effect->ProcessData(data);
        return VideoHandle(&AsVideo(data));
    }
    /// The white share of the picture.
    double Area(SettingsEffectVideoGenerator const& settings) {
        std::vector<unsigned char> const levels = Samples(*Make(settings));
        return std::accumulate(levels.begin(), levels.end(), 0.0) / 255 / static_cast<double>(levels.size());
    }
    static SettingsEffectVideoGenerator Shape(S::Shape shape) {
        SettingsEffectVideoGenerator settings;
        settings.SetShape(shape);
        settings.SetSize({101, 75, 1, 1});
        return settings;
    }
    StandardHost host;
};

TEST_F(VideoGeneratorTest, NeedsNoPictureAndIgnoresTheOneItGets) {
    SettingsEffectVideoGenerator const settings = Shape(S::HEART);
    VideoHandle const alone = Make(settings);
    EXPECT_EQ(alone->GetPixFmt(), PixFmt::GRAY8);
    EXPECT_EQ(alone->GetFrameFormat(), (FrameFormat{101, 75, 1, 1}));
    VideoHandle const given = MakeNoise(*host.GetContext(), PixFmt::NV12, 8, 8);
    given->SetTimeStamp(5);
    VideoHandle const made = Make(settings, given);
    EXPECT_EQ(Samples(*made), Samples(*alone));
    EXPECT_EQ(made->GetTimeStamp(), 5);
}

TEST_F(VideoGeneratorTest, ShapesHaveTheirAreas) {
    constexpr double PI = std::numbers::pi;
    EXPECT_NEAR(Area(Shape(S::DISC)), PI / 4, 1e-3);
    SettingsEffectVideoGenerator settings = Shape(S::POLYGON);
    settings.SetBlades(5);
    double const pentagon = 5 * std::sin(2 * PI / 5) / 8;
    EXPECT_NEAR(Area(settings), pentagon, 1e-3);
    settings.SetRoundness(50);
    EXPECT_GT(Area(settings), pentagon + 0.02);
    settings.SetRoundness(100);
    EXPECT_NEAR(Area(settings), PI / 4, 1e-3);
    settings = Shape(S::RING);
    settings.SetInnerRadius(60);
    EXPECT_NEAR(Area(settings), PI / 4 * (1 - 0.36), 1e-3);
    settings.SetInnerRadius(100);
    EXPECT_NEAR(Area(settings), 0, 1e-3);
    settings = Shape(S::STAR); // of triangles from the centre to a corner of each kind
    settings.SetBlades(6);
    settings.SetInnerRadius(40);
    EXPECT_NEAR(Area(settings), 12 * 0.5 * 0.4 * std::sin(PI / 6) / 4, 1e-3);
    EXPECT_NEAR(Area(Shape(S::HEART)), 180 * PI / (32 * 28.9722), 2e-3);
}

TEST_F(VideoGeneratorTest, ShapesStandUprightTurnAndTouchTheFrame) {
    SettingsEffectVideoGenerator settings = Shape(S::POLYGON);
    settings.SetBlades(3);
    auto const rowSum = [&](std::uint64_t y) {
        VideoHandle const picture = Make(settings);
        unsigned char const* const row = picture->GetPlane(0).GetRow(y);
        return std::accumulate(row, row + 101, 0);
    };
    EXPECT_LT(rowSum(2), 255 * 10); // a corner up
    EXPECT_GT(rowSum(54), 255 * 70);
    settings.SetRotation(180);
    EXPECT_GT(rowSum(20), 255 * 70);
    EXPECT_EQ(rowSum(0), 0);
    std::vector<unsigned char> const heart = Samples(*Make(Shape(S::HEART)));
    EXPECT_EQ(heart[20 * 101 + 25], 255); // a lobe
    EXPECT_EQ(heart[2 * 101 + 50], 0);    // the notch
    EXPECT_GT(heart[73 * 101 + 50], 0);   // the tip
}

TEST_F(VideoGeneratorTest, NoSizeIsRefused) {
    SettingsEffectVideoGenerator settings = Shape(S::DISC);
    settings.SetSize({0, 0, 0, 0});
    EXPECT_THROW(Make(settings), ProcException);
}

} // namespace
} // namespace Velnor::Proc
