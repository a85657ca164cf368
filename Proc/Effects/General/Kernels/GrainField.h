#pragma once

#include "Core/Export.h"

#include <array>
#include <cstdint>
#include <vector>

namespace Velnor::Proc::Kernels {

/// Philox4x32-10 (J. K. Salmon et al., "Parallel Random Numbers: As Easy as 1, 2, 3", SC 2011): 128 random bits as a
/// function of a counter and a key, the same on every machine.
VELNOR_API std::array<std::uint32_t, 4> Philox(std::array<std::uint32_t, 4> counter, std::array<std::uint32_t, 2> key);

/// Noise of mean 0 and deviation 1 at every place of a plane without end, made of one random number per grain and
/// interpolated smoothly between grains. It has the same deviation everywhere, on grains and between them. All
/// arithmetic is in integers or in single correctly rounded operations, so the numbers are the same on every machine.
class VELNOR_API GrainField {
public:
    /// @param size     distance of grains in pixels, 1 or more
    /// @param uniform  whether the numbers are evenly distributed; else they are all but normal (sums of 16 bytes)
    /// @param channel  another one is another field
    GrainField(std::uint32_t seed, std::uint32_t channel, float size, bool uniform, std::uint32_t width);

    /// The noise of row y, `width` numbers, valid until the next call. Rows are meant to be asked for in order.
    float const* GetRow(std::uint32_t y);

private:
    void FillGrains(std::uint32_t row, std::vector<float>& grains) const;

    std::uint32_t seedKey, channelKey;
    float grainSize;
    bool isUniform;
    std::vector<float> upper, lower, noise;
    std::int64_t upperRow = -1; ///< That `upper` and, one below, `lower` hold.
};

} // namespace Velnor::Proc::Kernels
