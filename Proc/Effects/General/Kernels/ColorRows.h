#pragma once

#include "Proc/Effects/Kit/PackedFormats.h"
#include "Proc/Interfaces/Plane.h"

#include <array>
#include <cstdint>

namespace Velnor::Proc::Kernels {

/// Pushes each colour away from the grey of its luma, the more the smaller its colourfulness (largest less smallest
/// component) is: c + (c - luma) * strength / 100 * (1 - colourfulness / 255), to the nearest level, clamped. Greys and
/// the fourth byte stay. In place.
/// @param strength  -100 to 100
void ApplyVibrance(MutablePlane const& plane, PackedRgb const& format, int strength);

/// What is added to the three colour bytes of a pixel, by its luma.
using ToneTable = std::array<std::array<std::int16_t, 3>, 256>;

/// Adds to each pixel the entry of its luma, clamped. The fourth byte stays. In place.
void AddTones(MutablePlane const& plane, PackedRgb const& format, ToneTable const& tones);

} // namespace Velnor::Proc::Kernels
