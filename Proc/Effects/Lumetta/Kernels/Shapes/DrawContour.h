#pragma once

#include "Proc/Interfaces/Face.h"
#include "Proc/Interfaces/Plane.h"

#include <vector>

namespace Velnor::Proc::Kernels {

/// A line through points, in pixels; pixel (0, 0) has its middle at (0, 0). One point is a dot.
struct Contour {
    std::vector<Face::Point> points;
    bool isClosed = false; ///< From the last point back to the first.
    bool isFilled = false; ///< With what it encloses by the even-odd rule; closed ones only.
    float grow = 0;        ///< Half the width of the line; what is filled reaches as far beyond the outline.
};

/// Raises the bytes of the mask under the contour to 255 at most, never lowering one: what overlaps shows no seam.
/// @param feather  width in pixels of the edge, half of it on either side; below 1 it is as wide as a pixel, and the
///                 level is the share of the pixel that is covered
void DrawContour(MutablePlane const& mask, Contour const& contour, float feather);

} // namespace Velnor::Proc::Kernels
