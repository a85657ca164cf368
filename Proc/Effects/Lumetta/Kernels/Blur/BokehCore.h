#pragma once

#include "Proc/Effects/Kit/Targets.h"
#include "Proc/Interfaces/Plane.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Velnor::Proc::Kernels {

/// The image of a lens aperture as weights of a convolution: the shape turned by 180 degrees.
struct BokehKernel {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<float> weights; ///< Row after row.
    float sum = 0;              ///< Of the weights in the order of the shape's samples.
};

/// What a sample of 0 to 255 becomes on the scale 0 to 1: above the threshold (strictly) it is multiplied by the gain.
float Amplify(unsigned char sample, float threshold, float gain);

/// Weights from a grey shape, one byte a pixel.
BokehKernel MakeBokehKernel(ConstPlane const& shape, double threshold, double gain);

/// An amplified picture with a border for a kernel's reach.
struct PaddedPicture {
    std::size_t samples = 0; ///< Of a picture's row: 3 a pixel.
    std::size_t rows = 0;    ///< Of the picture.
    std::size_t stride = 0;  ///< Floats from row to row: (kernel width + picture width) x 3.
    std::size_t origin = 0;  ///< Of the picture's first sample.
    std::vector<float> values;
};

/// Amplifies a picture of 3 bytes a pixel and mirrors it around its edge pixels: half a kernel (rounded down) to the
/// left and above, the rest to the right and below. The kernel must be smaller than the picture in both directions.
/// The bottom is anchored at the end of the buffer, whose length is a multiple of 8 floats: where the rows do not fill
/// it, the first floats of each row below the picture are those of two rows further.
PaddedPicture PadPicture(ConstPlane const& picture, BokehKernel const& kernel, double threshold, double gain);

/// The picture plus its correlation with the weights, rows of `samples` floats. Per sample, products are added one by
/// one in the order of the weights, without fused multiply-add; weights of 0 count for nothing.
std::vector<float> Convolve(PaddedPicture const& picture, BokehKernel const& kernel);

/// The meaning of Convolve in plain loops: every other way gives the same floats.
std::vector<float> ConvolvePlain(PaddedPicture const& picture, BokehKernel const& kernel);

/// The targets that Convolve has code for and may use, slowest first; it takes the last.
std::vector<Target> SupportedBokehTargets();

/// Convolve by the code for one target, which kernels must be allowed to use.
std::vector<float> ConvolveWith(Target target, PaddedPicture const& picture, BokehKernel const& kernel);

/// Writes sums as bytes: 255 x value / kernel sum, rounded and clamped. What is not a number becomes 0.
void WriteLevels(std::vector<float> const& sums, float kernelSum, MutablePlane const& target);

} // namespace Velnor::Proc::Kernels
