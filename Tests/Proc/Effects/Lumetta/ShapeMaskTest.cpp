#include "Proc/Settings/SettingsEffectShapeMask.h"

#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Tests/Support/Pictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(ShapeMask)
namespace {

using namespace Testing;
using S = SettingsEffectShapeMask;

VideoHandle MakeMask(SettingsEffectShapeMask const& settings, FrameFormat const& frame) {
    ContextHandle const context = CreateContext();
    auto const effect = CreateShapeMask(nullptr, context);
    effect->SetSettings(settings);
    DataHandle const picture = context->CreateImage(PixFmt::YUV420P, frame);
    picture->SetTimeStamp(99);
    return VideoHandle(&AsVideo(effect->ProcessData(std::vector<DataHandle>{picture})));
}

SettingsEffectShapeMask Shape(S::Shape shape, double size, double feather) {
    SettingsEffectShapeMask settings;
    settings.SetShape(shape);
    settings.SetWidth(size);
    settings.SetHeight(size);
    settings.SetFeather(feather);
    return settings;
}

TEST(ShapeMask, IsAGreyPictureOfTheSameFrameInTheProportionsOfTheFrame) {
    SettingsEffectShapeMask settings = Shape(S::RECTANGLE, 50, 0);
    settings.SetCenterX(25);
    settings.SetForeground(10);
    settings.SetBackground(300); // beyond: 255
    VideoHandle const mask = MakeMask(settings, {40, 20, 4, 3});
    EXPECT_EQ(mask->GetPixFmt(), PixFmt::GRAY8);
    EXPECT_EQ(mask->GetFrameFormat(), (FrameFormat{40, 20, 4, 3}));
    EXPECT_EQ(mask->GetTimeStamp(), 99);
    std::vector<unsigned char> const levels = Samples(*mask);
    for (std::size_t i = 0; i < levels.size(); ++i) {
        bool const inside = i % 40 < 20 && i / 40 >= 5 && i / 40 < 15;
        EXPECT_EQ(levels[i], inside ? 10 : 255) << i;
    }
}

TEST(ShapeMask, ForegroundOnlyExactlyWhereNoFrameShowsTheBackground) {
    std::vector<FrameFormat> const frames{{1, 1, 1, 1}, {64, 48, 1, 1}, {3, 90, 1, 1}, {90, 3, 1, 1}, {31, 31, 1, 1}};
    double const diagonal = 100 * std::sqrt(2.0);
    double const pentagon = 100 / std::cos(0.2 * 3.14159265358979); // just misses at the bottom
    struct Case {
        S::Shape shape;
        double size, feather;
        bool covers;
    };
    for (Case const& one : {Case{S::ELLIPSE, diagonal + 1e-9, 0, true},
                            {S::ELLIPSE, diagonal - 4, 0, false},
                            {S::ELLIPSE, 2 * diagonal + 1e-9, 50, true},
                            {S::ELLIPSE, 2 * diagonal - 40, 50, false},
                            {S::ELLIPSE, 400, 100, false},
                            {S::RECTANGLE, 100, 0, true},
                            {S::RECTANGLE, 96, 0, false},
                            {S::RECTANGLE, 200, 50, true},
                            {S::RECTANGLE, 180, 50, false},
                            {S::BAND, 100, 0, true},
                            {S::BAND, 125, 20, true},
                            {S::BAND, 115, 20, false},
                            {S::POLYGON, 400, 0, true},
                            {S::POLYGON, pentagon, 0, false},
                            {S::ELLIPSE, 0, 0, false}}) {
        SettingsEffectShapeMask settings = Shape(one.shape, one.size, one.feather);
        settings.SetSides(5);
        SCOPED_TRACE(std::to_string(one.shape) + ", " + std::to_string(one.size) + ", " + std::to_string(one.feather));
        EXPECT_EQ(settings.IsForegroundOnly(), one.covers);
        bool everywhere = true;
        for (FrameFormat const& frame : frames)
            everywhere = everywhere && std::ranges::count(Samples(*MakeMask(settings, frame)), 0) ==
                                           static_cast<std::int64_t>(frame.width) * frame.height;
        EXPECT_EQ(everywhere, one.covers);
        settings.SetRotation(180);
        if (one.shape != S::POLYGON) {
            EXPECT_EQ(settings.IsForegroundOnly(), one.covers);
        }
        settings.SetRotation(30); // leaves some frame uncovered
        EXPECT_FALSE(settings.IsForegroundOnly());
        settings.SetBackground(-5);
        EXPECT_TRUE(settings.IsForegroundOnly()); // 0 and 0
    }
}

TEST(ShapeMask, RoundCornersAndAShiftedCentreUncoverTheFrame) {
    SettingsEffectShapeMask settings = Shape(S::RECTANGLE, 100, 0);
    settings.SetCornerRadius(10);
    EXPECT_FALSE(settings.IsForegroundOnly());
    settings.SetWidth(106); // the arc passes outside the frame's corner
    settings.SetHeight(106);
    EXPECT_TRUE(settings.IsForegroundOnly());
    settings.SetCenterX(51);
    EXPECT_TRUE(settings.IsForegroundOnly());
    settings.SetCenterX(54);
    EXPECT_FALSE(settings.IsForegroundOnly());
}

} // namespace
} // namespace Velnor::Proc
