#include "Proc/Effects/Photo/PanoramaSize.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Settings/SettingsEffectPanorama.h"
#include "Proc/Settings/SettingsEffectRotate.h"
#include "Proc/Settings/SettingsEffectStitcher.h"
#include "Tests/Proc/Effects/Photo/PhotoEffectTest.h"
#include "Tests/Support/HostRun.h"
#include "Tests/Support/Places.h"
#include "Tests/Support/Refusal.h"

#include <gmock/gmock.h>

#include <cmath>
#include <random>

namespace Velnor::Proc {
namespace {

using namespace Testing;
using Pictures = std::vector<DataHandle>;
using S = SettingsEffectPanorama;

/// A portrait, and two views on it that overlap by a third; the second is turned a little and darker.
struct PanoramaTest : ::testing::Test, HostRun {
    VideoHandle const photo = Convert(
        ReadPicture(std::string(Testing::SOURCE_DIR) + "/Samples/astronaut.png", context).picture, PixFmt::RGB24);
    VideoHandle const left = photo->MakePart({0, 0, 340, 512});
    VideoHandle const right = MakeRight();

    VideoHandle MakeRight() {
        SettingsEffectRotate turn;
        turn.SetAngle(1.5);
        turn.SetOutputSizeMode(SettingsEffectRotate::INNER);
        VideoHandle const view = Apply(turn, photo->MakePart({172, 0, 340, 512}));
        MutablePlane const plane = view->GetMutablePlane(0);
        for (std::uint64_t y = 0; y < plane.GetHeight(); ++y)
            for (std::uint64_t x = 0; x < plane.GetWidth(); ++x)
                plane.GetRow(y)[x] = static_cast<unsigned char>(plane.GetRow(y)[x] * 94 / 100);
        return view;
    }

    static S In(S::Mode mode, S::Border border) {
        S settings;
        settings.SetMode(mode);
        settings.SetBorder(border);
        return settings;
    }

    template <class SettingsClass>
    VideoHandle Join(SettingsClass const& settings, Pictures views) {
        return VideoHandle(&AsVideo(Make(settings)->ProcessData(views)));
    }

    template <class SettingsClass>
    std::string Refusal(SettingsClass const& settings, Pictures const& views) {
        try {
            Join(settings, views);
        } catch (EffectException const& exception) {
            return DescribeException(exception);
        }
        return "none";
    }

    /// Mean difference of a part of the joined picture to the photograph, with the part moved across and down.
    double Difference(VideoHandle const& joined, std::int64_t across, std::int64_t down) const {
        ConstPlane const wanted = photo->GetPlane(0);
        ConstPlane const got = joined->GetPlane(0);
        double sum = 0;
        std::uint64_t count = 0;
        for (std::int64_t y = 40; y < 440; y += 3)
            for (std::int64_t x = 40; x < 440; x += 3)
                for (std::int64_t k = 0; k < 3; ++k, ++count)
                    sum += std::abs(wanted.GetRow(static_cast<std::uint64_t>(y + down))[3 * (x + across) + k] -
                                    got.GetRow(static_cast<std::uint64_t>(y))[3 * x + k]);
        return sum / static_cast<double>(count);
    }
};

TEST_F(PanoramaTest, JoinsOverlappingViewsToAboutThePhotograph) {
    VideoHandle const joined = Join(In(S::SCANS, S::CROP), {left, right});
    ASSERT_EQ(joined->GetPixFmt(), PixFmt::RGB24);
    EXPECT_NEAR(joined->GetFrameFormat().width, 512, 25);
    EXPECT_NEAR(joined->GetFrameFormat().height, 512, 35);
    double least = 255;
    for (int y = 0; y < 32; ++y)
        for (int x = -8; x < 16; ++x) least = std::min(least, Difference(joined, x, y));
    EXPECT_LT(least, 9);
}

TEST_F(PanoramaTest, MarksWhatNoViewShowsAndGivesTheSameAgain) {
    for (S::Mode const mode : {S::ROTATION, S::SCANS}) {
        VideoHandle const joined = Join(In(mode, S::CLEAR), {right, left});
        ASSERT_EQ(joined->GetPixFmt(), PixFmt::RGBA);
        std::vector<unsigned char> const samples = Samples(*joined);
        std::array<std::size_t, 256> counts{};
        for (std::size_t i = 3; i < samples.size(); i += 4) ++counts[samples[i]];
        EXPECT_GT(counts[0], 50U);
        EXPECT_GT(counts[255], 9 * samples.size() / 40);
        EXPECT_EQ(Samples(*Join(In(mode, S::CLEAR), {right, left})), samples);
    }
}

TEST_F(PanoramaTest, IsWholeOverManyStrips) {
    constexpr std::uint32_t WIDTH = 700, HEIGHT = 7000;
    VideoHandle const tall = MakeFlat(context, PixFmt::RGB24, WIDTH, HEIGHT, {120});
    MutablePlane const plane = tall->GetMutablePlane(0);
    std::mt19937 random(7);
    auto const pick = [&](std::uint32_t count) { return static_cast<std::uint32_t>(random() % count); };
    for (int i = 0; i < 4000; ++i) {
        Rectangle const patch{pick(WIDTH - 60), pick(HEIGHT - 60), 8 + pick(50), 8 + pick(50)};
        std::array<unsigned char, 3> const colour{static_cast<unsigned char>(pick(256)),
                                                  static_cast<unsigned char>(pick(256)),
                                                  static_cast<unsigned char>(pick(256))};
        for (std::uint64_t y = patch.y; y < patch.y + patch.height; ++y)
            for (std::uint64_t x = 3 * patch.x; x < 3 * (patch.x + patch.width); ++x)
                plane.GetRow(y)[x] = colour.at(x % 3);
    }
    VideoHandle const joined =
        Join(In(S::SCANS, S::CLEAR), {tall->MakePart({0, 0, 480, HEIGHT}), tall->MakePart({220, 0, 480, HEIGHT})});
    ASSERT_NEAR(joined->GetFrameFormat().width, WIDTH, 3);
    ASSERT_NEAR(joined->GetFrameFormat().height, HEIGHT, 3);
    ConstPlane const got = joined->GetPlane(0);
    double worst = 0; // Of the rows, each at the best of some places, as the views may have moved by a pixel.
    for (std::uint64_t y = 10; y < HEIGHT - 10; y += 5) {
        double least = 255;
        for (std::uint64_t down = 0; down < 5; ++down)
            for (std::uint64_t across = 0; across < 5; ++across) {
                double sum = 0;
                for (std::uint64_t x = 10; x < WIDTH - 10; x += 5)
                    for (std::uint64_t k = 0; k < 3; ++k)
                        sum +=
                            std::abs(plane.GetRow(y + down - 2)[3 * (x + across - 2) + k] - got.GetRow(y)[4 * x + k]);
                least = std::min(least, sum / (3 * (WIDTH - 20) / 5));
            }
        worst = std::max(worst, least);
    }
    EXPECT_LT(worst, 15);
}

TEST(PanoramaSizeTest, RefusesWhatIsTooLargeOrTooFarAway) {
    auto const refusal = [](std::vector<PanoramaPlace> const& places) {
        return RefusalOf([&] { RequirePossibleSize(places); });
    };
    EXPECT_EQ(refusal({{-70000, 5, 3000, 2000}, {58072, 0, 3000, 2005}}), "");
    EXPECT_EQ(
        refusal({{-16384, 0, 16384, 16384}, {0, -5, 10, 16389}}),
        "The panorama would be 16394 x 16389 pixels; at most 268435456 in all and 131072 on a side are possible.");
    EXPECT_EQ(refusal({{-70000, 0, 300, 200}, {61000, 0, 300, 200}}),
              "The panorama would be 131300 x 200 pixels; at most 268435456 in all and 131072 on a side are possible.");
    EXPECT_EQ(refusal({{0, 0, 300, 200}, {0, 0, 40000, 20}}),
              "Picture 2 would take 40000 x 20 pixels of the panorama; 1 to 32766 on a side are possible: it hardly "
              "matches the others.");
    EXPECT_EQ(
        refusal({{0, 0, 300, 0}, {0, 0, 4, 2}}),
        "Picture 1 would take 300 x 0 pixels of the panorama; 1 to 32766 on a side are possible: it hardly matches "
        "the others.");
    // What a conversion of a number without end makes of it.
    EXPECT_EQ(
        refusal({{0, 0, 300, 200}, {-2147483648, 0, 1, 1}}),
        "Picture 2 would lie at -2147483648, 0 in the panorama; at most 1073741824 from its origin is possible: it "
        "hardly matches the others.");
}

TEST_F(PanoramaTest, IsWhatTheStitcherDoesWithPhotographs) {
    EXPECT_EQ(Samples(*Join(SettingsEffectStitcher(), {left, right})), Samples(*Join(S(), {left, right})));
}

TEST_F(PanoramaTest, SaysWhichPicturesDoNotMatch) {
    VideoHandle const cat = ReadPicture(std::string(Testing::SOURCE_DIR) + "/Samples/chelsea.png", context).picture;
    std::string const advice = "; overlaps of a third, with some detail in them, are needed.";
    EXPECT_EQ(Refusal(S(), {left, cat}), "Pictures 1 and 2 do not match" + advice);
    EXPECT_EQ(Refusal(SettingsEffectStitcher(), {left, cat}), "Pictures 1 and 2 do not match" + advice);
    EXPECT_EQ(Refusal(S(), {left, cat, right}), "Picture 2 does not match the others" + advice);
    EXPECT_EQ(Refusal(S(), {left}), "A panorama is made of two pictures or more, 1 is given.");
    EXPECT_EQ(Refusal(S(), {left, MakeFlat(context, PixFmt::RGB24, 500, 31, {0})}),
              "Picture 2 of the panorama is 500 x 31 pixels; both sides must be 32 or more.");
    S loose;
    loose.SetConfidence(0);
    VideoHandle const plain = MakeFlat(context, PixFmt::RGB24, 300, 200, {90});
    EXPECT_EQ(Refusal(loose, {plain, plain}),
              "The pictures match, but not as views from one camera: no refinement of their arrangement was found.");
}

} // namespace
} // namespace Velnor::Proc
