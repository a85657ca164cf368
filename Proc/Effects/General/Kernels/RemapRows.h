#pragma once

#include "Core/Export.h"
#include "Proc/Interfaces/Plane.h"

#include <cstdint>
#include <vector>

namespace Velnor::Proc::Kernels {

/// Source positions of a row of samples, each split into the sample to its upper left and the weights of that sample's
/// right and lower neighbours.
struct RowTaps {
    explicit RowTaps(std::size_t samples) : column(samples), row(samples), right(samples), lower(samples) {}

    std::vector<std::int32_t> column, row;
    std::vector<float> right, lower; ///< 0 to 1.
};

/// Splits positions in a plane of width x height samples; those outside are moved to the nearest edge, those that are
/// not numbers to 0. As many as `taps` was made for.
VELNOR_API void SplitPositions(float const* x, float const* y, std::uint32_t width, std::uint32_t height,
                               RowTaps& taps);

/// Writes one row, each byte by bilinear interpolation with weights of float precision:
///
///     top = a + right (b - a);  bottom = c + right (d - c);  (int)(top + lower (bottom - top) + 0.5)
///
/// @param source  samples of 1 to 4 bytes; its width and height in samples are those that the positions were split for
VELNOR_API void SampleRow(ConstPlane const& source, unsigned int sampleBytes, RowTaps const& taps,
                          unsigned char* target);

/// The same, sample by sample: the meaning of the above, and its only way on some processors.
VELNOR_API void SampleRowScalar(ConstPlane const& source, unsigned int sampleBytes, RowTaps const& taps,
                                unsigned char* target);

constexpr unsigned int NO_ALPHA = 4; ///< Of samples whose bytes are all colours.

/// Writes colours of a row anew, each neighbour counting by its alpha too, where those differ and are not all 0: what
/// is clear has no colour to give.
///
/// @param alpha      of the resolution of `source`; one byte a sample, at the distance of its sample bytes
/// @param alphaByte  of a sample, that is left as it is, or NO_ALPHA
VELNOR_API void WeighRow(ConstPlane const& source, unsigned int sampleBytes, ConstPlane const& alpha,
                         unsigned int alphaByte, RowTaps const& taps, unsigned char* target);

} // namespace Velnor::Proc::Kernels
