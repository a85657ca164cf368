#pragma once

#include "Proc/Interfaces/Plane.h"

namespace Velnor::Proc::Kernels {

/// A similarity about a centre: position p of the target shows centre + (a, -b; b, a) (p - centre) of the source, in
/// pixels, sample centres at integers. a = cos, b = sin is a rotation; a > 0, b = 0 a change of size.
struct Similarity {
    double a = 1;
    double b = 0;
    double centerX = 0;
    double centerY = 0;
};

/// The mean of a plane under two similarities, by bilinear interpolation, outside the plane its nearest pixel. Source
/// and target are of the same size, `pixelBytes` 1 to 4, and must not overlap. Weights are of 8 bits; the result is
/// rounded once.
void MeanOfTwo(ConstPlane const& source, MutablePlane const& target, unsigned int pixelBytes, Similarity const& first,
               Similarity const& second);

/// Writes colours of that mean anew, each pixel counting by its alpha too, where those differ and are not all 0: what
/// is clear has no colour to give.
/// @param alpha      of the source, one byte a pixel, at the distance of its pixel bytes
/// @param alphaByte  of a pixel, that is left as it is; -1 where all bytes are colours
void WeighMeanOfTwo(ConstPlane const& source, MutablePlane const& target, unsigned int pixelBytes,
                    ConstPlane const& alpha, int alphaByte, Similarity const& first, Similarity const& second);

} // namespace Velnor::Proc::Kernels
