#pragma once

#include "Proc/Interfaces/Plane.h"

namespace Velnor::Proc::Kernels {

/// How a pencil draws; shares of 0 to 1.
struct Pencil {
    double strength = 1; ///< Of the drawing over the picture.
    double darkness = 0.5;
    double hatching = 0;
    double paper = 0;
    double spacing = 8; ///< Of hatching lines, pixels.
};

/// Turns a luma plane into a pencil drawing: dodged by its blurred self, hatched where the blurred luma is dark, on
/// rough paper. `blurred` is of the same size. The same for the same arguments, everywhere.
void DrawPencil(ConstPlane const& blurred, MutablePlane const& luma, Pencil const& pencil);

} // namespace Velnor::Proc::Kernels
