#include "Proc/Effects/Lumetta/Kernels/Shapes/DrawShape.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <numbers>
#include <vector>

namespace Velnor::Proc::Kernels {
namespace {

constexpr int WIDTH = 61;
constexpr int HEIGHT = 47;

std::vector<int> Draw(MaskShape const& shape, int width = WIDTH, int height = HEIGHT) {
    std::int64_t const stride = width + 9;
    std::vector<unsigned char> memory(static_cast<std::size_t>(stride * height), 77);
    DrawShape(
        MutablePlane(memory.data(), stride, static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height)),
        shape);
    std::vector<int> levels;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < stride; ++x) {
            int const level = memory[static_cast<std::size_t>(y * stride + x)];
            if (x < width)
                levels.push_back(level);
            else
                EXPECT_EQ(level, 77) << "between rows";
        }
    return levels;
}

MaskShape Make(Outline outline, double feather = 0) {
    MaskShape shape;
    shape.outline = outline;
    shape.centreX = 29.3;
    shape.centreY = 24.1;
    shape.halfWidth = 22.7;
    shape.halfHeight = 13.4;
    shape.angle = 0.4;
    shape.sides = 5;
    shape.feather = feather;
    return shape;
}

/// Position in the shape's own axes, in half sizes.
struct Place {
    double x, y;
};

bool IsInside(MaskShape const& shape, Place const& p) {
    switch (shape.outline) {
    case Outline::Ellipse:
        return std::hypot(p.x, p.y) < 1;
    case Outline::Band:
        return std::abs(p.y) < 1;
    case Outline::Rectangle: {
        double const radius = shape.corner * std::min(shape.halfWidth, shape.halfHeight);
        double const x = std::abs(p.x) * shape.halfWidth - shape.halfWidth + radius;
        double const y = std::abs(p.y) * shape.halfHeight - shape.halfHeight + radius;
        return std::max(x, y) < 0 || std::hypot(std::max(x, 0.0), std::max(y, 0.0)) < radius ||
               (radius == 0 && std::max(x, y) < 0);
    }
    case Outline::Polygon:
        for (int i = 0; i < shape.sides; ++i) { // between corners i and i + 1, seen from the centre
            auto const corner = [&](int k) {
                double const angle = 2 * std::numbers::pi * k / shape.sides - std::numbers::pi / 2;
                return Place{std::cos(angle), std::sin(angle)};
            };
            Place const a = corner(i);
            Place const b = corner(i + 1);
            if ((b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x) < 0) return false;
        }
        return true;
    }
    return false;
}

/// The share of each pixel that the shape covers, by counting points.
std::vector<double> Coverage(MaskShape const& shape) {
    constexpr int FINE = 16;
    std::vector<double> shares;
    for (int y = 0; y < HEIGHT; ++y)
        for (int x = 0; x < WIDTH; ++x) {
            int count = 0;
            for (int i = 0; i < FINE * FINE; ++i) {
                double const dx = x + (i % FINE + 0.5) / FINE - shape.centreX;
                double const dy = y + (i / FINE + 0.5) / FINE - shape.centreY;
                Place const place{(dx * std::cos(shape.angle) + dy * std::sin(shape.angle)) / shape.halfWidth,
                                  (dy * std::cos(shape.angle) - dx * std::sin(shape.angle)) / shape.halfHeight};
                count += IsInside(shape, place) ? 1 : 0;
            }
            shares.push_back(double{1.0 * count} / (FINE * FINE));
        }
    return shares;
}

TEST(DrawShape, WithoutFeatherEachPixelShowsTheShareThatTheShapeCovers) {
    for (Outline const outline : {Outline::Ellipse, Outline::Rectangle, Outline::Band, Outline::Polygon})
        for (double const corner : {0.0, 0.6}) {
            MaskShape shape = Make(outline);
            shape.corner = corner;
            std::vector<int> const levels = Draw(shape);
            std::vector<double> const shares = Coverage(shape);
            double sum = 0;
            for (std::size_t i = 0; i < levels.size(); ++i) {
                double const error = levels[i] / 255.0 - shares[i];
                // Most where a sharp corner lies in the pixel, which its distance from the outline cannot tell.
                EXPECT_LT(std::abs(error), 0.21) << "pixel " << i << " of outline " << static_cast<int>(outline);
                if (shares[i] == 0 || shares[i] == 1) {
                    EXPECT_LT(std::abs(error), 0.11) << "pixel " << i;
                }
                sum += error;
            }
            EXPECT_LT(std::abs(sum), 3.0) << "area of outline " << static_cast<int>(outline);
        }
}

TEST(DrawShape, CoreAndOutlineBoundTheSoftEdge) {
    for (Outline const outline : {Outline::Ellipse, Outline::Rectangle, Outline::Band, Outline::Polygon}) {
        MaskShape shape = Make(outline, 0.4);
        shape.corner = 0.4;
        shape.inside = 20;
        shape.outside = 200;
        MaskShape core = shape;
        core.corner = 0; // what the feather leaves of it
        double const inset = 0.4 * std::min(shape.halfWidth, shape.halfHeight);
        bool const isUniform = outline == Outline::Rectangle;
        core.halfWidth = isUniform ? shape.halfWidth - inset : shape.halfWidth * 0.6;
        core.halfHeight = isUniform ? shape.halfHeight - inset : shape.halfHeight * 0.6;
        std::vector<int> const levels = Draw(shape);
        std::vector<double> const within = Coverage(shape);
        std::vector<double> const deep = Coverage(core);
        int between = 0;
        for (std::size_t i = 0; i < levels.size(); ++i) {
            if (deep[i] == 1) {
                EXPECT_EQ(levels[i], 20) << "pixel " << i << " of outline " << static_cast<int>(outline);
            }
            if (within[i] == 0) {
                EXPECT_EQ(levels[i], 200) << "pixel " << i << " of outline " << static_cast<int>(outline);
            }
            if (levels[i] > 30 && levels[i] < 190) ++between;
        }
        EXPECT_GT(between, 50);
    }
}

TEST(DrawShape, TheSoftEdgeRisesEvenlyWithoutStepsOrCreases) {
    for (Outline const outline : {Outline::Ellipse, Outline::Rectangle, Outline::Band, Outline::Polygon})
        for (int const sides : {3, 6}) {
            MaskShape shape = Make(outline, 0.8);
            shape.centreX = 450;
            shape.centreY = 350;
            shape.halfWidth = 400;
            shape.halfHeight = 300;
            shape.sides = sides;
            std::vector<int> const levels = Draw(shape, 900, 700);
            int steepest = 0;
            int sharpest = 0;
            for (int y = 1; y < 699; ++y)
                for (int x = 1; x < 899; ++x) {
                    auto const at = [&](int right, int down) {
                        return levels[static_cast<std::size_t>((y + down) * 900 + x + right)];
                    };
                    steepest = std::max({steepest, std::abs(at(1, 0) - at(0, 0)), std::abs(at(0, 1) - at(0, 0))});
                    sharpest = std::max({sharpest, std::abs(at(-1, 0) - 2 * at(0, 0) + at(1, 0)),
                                         std::abs(at(0, -1) - 2 * at(0, 0) + at(0, 1))});
                }
            // The curve's greatest slope is 15/8 of the mean one; the polygon's edge is the narrowest of all.
            EXPECT_LE(steepest, outline == Outline::Polygon ? 6 : 3) << static_cast<int>(outline);
            EXPECT_LE(sharpest, 2) << static_cast<int>(outline) << " has a crease";
        }
}

TEST(DrawShape, ShapesWithoutAreaAndTinyPicturesAreDefined) {
    MaskShape shape = Make(Outline::Rectangle);
    shape.halfHeight = 0;
    EXPECT_EQ(std::ranges::count(Draw(shape), 0), WIDTH * HEIGHT);
    for (Outline const outline : {Outline::Ellipse, Outline::Rectangle, Outline::Band, Outline::Polygon})
        for (double const feather : {0.0, 1e-9, 1.0}) {
            shape = Make(outline, feather);
            shape.centreX = 0.5;
            shape.centreY = 0.5;
            EXPECT_EQ(Draw(shape, 1, 1), std::vector<int>{255}) << static_cast<int>(outline) << ", " << feather;
        }
}

} // namespace
} // namespace Velnor::Proc::Kernels
