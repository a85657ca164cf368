#include "Proc/Settings/SettingsEffectShapeMask.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Velnor::Proc {
namespace {

/// The frame's four corners in the shape's own coordinates, in which its outline passes through (1, 0) and (0, 1).
struct Corners {
    double left, right, top, bottom;
    double GetReachX() const { return std::max(std::abs(left), std::abs(right)); }
    double GetReachY() const { return std::max(std::abs(top), std::abs(bottom)); }
};

/// The core is narrowest against its frame where the shape is as wide as high.
bool RectangleCovers(Corners const& corners, double core, double radius) {
    double const x = corners.GetReachX() - core + radius;
    double const y = corners.GetReachY() - core + radius;
    return std::max(x, y) <= radius && std::hypot(std::max(x, 0.0), std::max(y, 0.0)) <= radius;
}

bool PolygonCovers(Corners const& corners, double core, int sides) {
    for (int i = 0; i < sides; ++i) {
        double const angle = std::numbers::pi * ((2.0 * i + 1) / sides - 0.5);
        double const farthest = std::max(corners.left * std::cos(angle), corners.right * std::cos(angle)) +
                                std::max(corners.top * std::sin(angle), corners.bottom * std::sin(angle));
        if (!(farthest <= core * std::cos(std::numbers::pi / sides))) return false;
    }
    return true;
}

} // namespace

bool SettingsEffectShapeMask::IsForegroundOnly() const {
    if (std::clamp(valueForeground, 0, 255) == std::clamp(valueBackground, 0, 255)) return true;
    if (!(valueHeight > 0) || (valueShape != BAND && !(valueWidth > 0))) return false;
    // Turned otherwise, every shape leaves part of a frame that is narrow enough.
    if (std::fmod(valueRotation, 180.0) != 0) return false;
    double const side = std::fmod(valueRotation, 360.0) == 0 ? 1 : -1;
    double const perX = side * 200 / valueWidth;
    double const perY = side * 200 / valueHeight;
    Corners const corners{-valueCenterX / 100 * perX, (1 - valueCenterX / 100) * perX, -valueCenterY / 100 * perY,
                          (1 - valueCenterY / 100) * perY};
    double const feather = std::clamp(valueFeather / 100, 0.0, 1.0);
    double const corner = std::clamp(valueCornerRadius / 100, 0.0, 1.0);
    double const core = 1 - feather;
    switch (valueShape) {
    case ELLIPSE:
        return std::hypot(corners.GetReachX(), corners.GetReachY()) <= core;
    case RECTANGLE:
        return RectangleCovers(corners, core, std::max(corner - feather, 0.0));
    case BAND:
        return corners.GetReachY() <= core;
    case POLYGON:
        return PolygonCovers(corners, core, valueSides);
    }
    return false;
}

} // namespace Velnor::Proc
