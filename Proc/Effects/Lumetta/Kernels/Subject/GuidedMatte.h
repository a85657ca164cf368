#pragma once

#include "Proc/Interfaces/Plane.h"

#include <cstddef>

namespace Velnor::Proc::Kernels {

/// Turns a hard cut, made on a small copy of a picture, into a soft mask of the picture that follows its hair: the
/// guided filter (K. He, J. Sun, X. Tang, "Guided Image Filtering", PAMI 2013), whose linear models are fitted on the
/// small copy and applied to the picture itself. Within `radius` pixels of the cut's edge, measured on the copy;
/// elsewhere the cut decides.
///
/// `smallRgb` has 3 bytes a pixel, `cut` one (`subject` inside, anything else outside) and the same size; `rgba` is the
/// picture, `mask` of its size is written, 0 to 255.
void MakeMatte(ConstPlane const& smallRgb, ConstPlane const& cut, unsigned char subject, std::size_t radius,
               ConstPlane const& rgba, MutablePlane const& mask);

} // namespace Velnor::Proc::Kernels
