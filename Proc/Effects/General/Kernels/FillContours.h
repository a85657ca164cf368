#pragma once

#include "Core/Export.h"
#include "Proc/Interfaces/Plane.h"

#include <vector>

namespace Velnor::Proc::Kernels {

struct ContourPoint {
    double x = 0, y = 0; ///< Pixels; pixel (0, 0) covers 0 to 1 in both directions.
};

/// A closed line, its last point joined to its first.
using Contour = std::vector<ContourPoint>;

/// Writes each byte as 255 times the share of its pixel that lies inside an odd number of the contours: exact along
/// rows, at 16 heights of each.
VELNOR_API void FillContours(std::vector<Contour> const& contours, MutablePlane const& plane);

} // namespace Velnor::Proc::Kernels
