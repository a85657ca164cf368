#pragma once

#include "Proc/Interfaces/Plane.h"

namespace Velnor::Proc::Kernels {

/// Rebuilds the pixels of little weight from those around: pull-push interpolation (S. Gortler et al., "The Lumigraph",
/// SIGGRAPH 1996). The picture is reduced level by level by weighted means; where a level lacks weight, it takes the
/// rest from the next coarser one, interpolated. Smooth, without seams, in time linear in the picture.
///
/// `picture` has pixels of 1 to 4 bytes, of which the first three are rebuilt, or the first of one or two; `weights`
/// has a byte for each: 255 keeps the pixel, 0 replaces it. Without any weight the picture stays. Where there is
/// `alpha`, a byte for each pixel at the distance of its sample bytes, colours count by it too. Needs 7 bytes a pixel.
void FillHoles(MutablePlane const& picture, unsigned int pixelBytes, ConstPlane const& weights,
               ConstPlane const& alpha = {});

} // namespace Velnor::Proc::Kernels
