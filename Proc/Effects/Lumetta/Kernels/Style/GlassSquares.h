#pragma once

#include "Proc/Interfaces/Plane.h"

#include <vector>

namespace Velnor::Proc::Kernels {

/// A rectangle of pixels, in which a pane begins.
struct GlassSquare {
    int left = 0, top = 0;
    int right = 0, bottom = 0; ///< The first column and row after it.
};

/// Covers a picture of 3 bytes a pixel with squares of about `side`, and quarters those, twice at the most, through
/// which the picture's edges run closely.
///
/// @param awareness  0: none is quartered; 1: already those of few edges are
std::vector<GlassSquare> DivideByDetail(ConstPlane const& picture, double side, double awareness);

} // namespace Velnor::Proc::Kernels
