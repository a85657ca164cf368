#pragma once

#include "Proc/Effects/Lumetta/Kernels/Subject/SubjectStrokes.h"
#include "Proc/Interfaces/Plane.h"

#include <vector>

namespace Velnor::Proc::Kernels {

/// The values of strokes in a plane of a byte a pixel; 0 is none.
inline constexpr unsigned char ON_SUBJECT = 255;
inline constexpr unsigned char ON_BACKGROUND = 128;

/// Whether any pixel has this value.
bool Contains(ConstPlane const& strokes, unsigned char value);

/// Gives strokes in other values, `subject` and `background`, their own ones. Everything else becomes none.
void TranslateStrokes(MutablePlane const& strokes, unsigned char subject, unsigned char background);

/// Adds the strokes of a large picture to those of its small copy: each, however thin, shows.
void ShrinkStrokes(ConstPlane const& large, MutablePlane const& small);

/// Writes marks of a picture of `width` pixels a row as strokes of one of another size and the same shape.
void PaintMarks(std::vector<Stroke> const& marks, std::size_t width, MutablePlane const& strokes);

/// What was painted on the subject is opaque in the mask, of the same size, what was painted on the background clear.
void BindStrokes(ConstPlane const& strokes, MutablePlane const& mask);

} // namespace Velnor::Proc::Kernels
