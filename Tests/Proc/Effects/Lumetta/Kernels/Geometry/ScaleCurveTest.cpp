#include "Proc/Effects/Lumetta/Kernels/Geometry/ScaleCurve.h"

#include <gtest/gtest.h>

#include <limits>

namespace Velnor::Proc::Kernels {
namespace {

TEST(PixelateScale, EndsAreExact) {
    for (unsigned int side : {1U, 31U, 32U, 33U, 479U, 480U, 4000U}) {
        EXPECT_EQ(PixelateScale(0, side, 5000), 1.0) << side;
        EXPECT_EQ(PixelateScale(100, side, 5000), 32.0 / side);
        EXPECT_EQ(PixelateScale(100, 5000, side), 32.0 / side);
    }
}

TEST(PixelateScale, FollowsASmoothstepOfTheReciprocal) {
    // Strength 1 gives x = 50: 0.495 of the way, where the smoothstep is 0.4925.
    double const way = (50.0 - 100.0 / 101.0) / (100.0 - 100.0 / 101.0);
    double const smooth = way * way * (3 - 2 * way);
    EXPECT_NEAR(PixelateScale(1, 640, 480), 32.0 / 480 + (1 - 32.0 / 480) * smooth, 1e-12);
    double previous = 1.0;
    for (int strength = 1; strength <= 100; ++strength) {
        double const factor = PixelateScale(strength, 640, 480);
        EXPECT_LT(factor, previous) << strength;
        previous = factor;
    }
}

TEST(PixelateScale, StaysBetweenItsEndsOutsideTheRange) {
    double const coarsest = 32.0 / 480;
    // Past 100 the curve turns up again, by little.
    EXPECT_GT(PixelateScale(1000, 640, 480), coarsest);
    EXPECT_LT(PixelateScale(1000, 640, 480), coarsest * 1.01);
    EXPECT_EQ(PixelateScale(-0.5, 640, 480), coarsest);
    EXPECT_EQ(PixelateScale(-2, 640, 480), 1.0);
}

TEST(PixelateScale, StrengthWithoutAPlaceOnTheCurveIsTheCoarsest) {
    double const coarsest = 32.0 / 480;
    EXPECT_EQ(PixelateScale(-1, 640, 480), coarsest);
    EXPECT_EQ(PixelateScale(std::numeric_limits<double>::quiet_NaN(), 640, 480), coarsest);
    EXPECT_EQ(PixelateScale(-1, 640, 16), 2.0);
    // So near to -1 that the cube of the parameter is not finite.
    ScaleCurve const curve{0, 1, 0.25, 1, 0, 1, 0, 1, {0, 0}, {0, 0}, 0, 0};
    EXPECT_EQ(Evaluate(curve, 1e200), 0.25);
}

TEST(PixelateScale, SmallPicturesAreEnlarged) {
    EXPECT_EQ(PixelateScale(100, 16, 9), 32.0 / 9);
    EXPECT_EQ(PixelateScale(-2, 16, 9), 1.0);
    EXPECT_EQ(PixelateScale(-0.5, 16, 9), 32.0 / 9);
    double const middle = PixelateScale(50, 16, 9);
    EXPECT_GT(middle, 1.0);
    EXPECT_LT(middle, 32.0 / 9);
}

TEST(ScaleCurve, TangentsBendTheCurveBetweenItsEnds) {
    ScaleCurve curve{0, 10, 2, 6, 0, 10, 0, 1, {0, 0}, {0, 0}, 0, 0};
    EXPECT_EQ(Evaluate(curve, 0), 2);
    EXPECT_EQ(Evaluate(curve, 5), 4);
    EXPECT_EQ(Evaluate(curve, 10), 6);
    curve.m0 = 4; // straight at first
    EXPECT_EQ(Evaluate(curve, 5), 4.5);
    curve.m1 = 8;
    EXPECT_EQ(Evaluate(curve, 5), 3.5);
    curve.m0 = -40; // would fall to -1
    EXPECT_EQ(Evaluate(curve, 5), 2);
    curve = {0, 10, 6, 2, 0, 10, 1, 0, {0, 0}, {0, 0}, 0, 0}; // the parameter runs backwards
    EXPECT_EQ(Evaluate(curve, 0), 2);
    EXPECT_EQ(Evaluate(curve, 10), 6);
}

} // namespace
} // namespace Velnor::Proc::Kernels
