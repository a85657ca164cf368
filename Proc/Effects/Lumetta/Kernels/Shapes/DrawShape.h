#pragma once

#include "Proc/Interfaces/Plane.h"

namespace Velnor::Proc::Kernels {

enum class Outline { Ellipse, Rectangle, Band, Polygon };

/// A shape with a soft edge on a plane of bytes. Lengths are in pixels; pixel (0, 0) covers 0 to 1 in both directions.
struct MaskShape {
    Outline outline = Outline::Ellipse;
    double centreX = 0, centreY = 0;
    double halfWidth = 0, halfHeight = 0; ///< 0 or more; a shape without area is not drawn. Bands have no width.
    double angle = 0;                     ///< Radians, clockwise.
    double corner = 0;                    ///< Radius of a rectangle's corners: 0 to 1 of half its shorter side.
    int sides = 3;                        ///< Of a polygon: 3 or more. One corner points up before it is turned.
    double feather = 0;                   ///< Width of the soft edge: 0 to 1 of the way from the outline to the centre.
    unsigned char inside = 255;
    unsigned char outside = 0;
};

/// Writes every byte of the plane. The level runs from `outside` at the outline to `inside` at its core, which is the
/// shape made smaller by the feather, along a curve whose slope and curvature vanish at both ends, so that neither end
/// shows (the quintic of K. Perlin, "Improving Noise", SIGGRAPH 2002). Between core and outline the level depends on
/// the distance from the core alone: corners of the outline are at least as round as the edge is wide, and no crease
/// leads to them. Edges narrower than a pixel cover one pixel linearly.
void DrawShape(MutablePlane const& plane, MaskShape const& shape);

} // namespace Velnor::Proc::Kernels
