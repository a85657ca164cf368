#pragma once

#include <cmath>
#include <utility>

namespace Velnor::Proc::Kernels {

/// The coordinate map of a pinch or a bulge inside the ellipse that touches the frame's sides:
///
///     source = centre + (1 + s H(r)) (output - centre),    H(r) = 2 r^3 - 3 r^2 + 1
///
/// r is the distance from the centre, 1 on the ellipse and beyond which nothing moves. A positive s reads from farther
/// out, so it makes the middle small; s = -0.5 enlarges the very centre twofold, below -1 the middle is mirrored.
/// Positions are integers from the upper left, without half a pixel's shift: column 0 lies on the ellipse's rim, the
/// last column within it.
class ImplodeMap {
public:
    ImplodeMap(unsigned int width, unsigned int height, float amount)
        : halfWidth(static_cast<float>(width) * 0.5F),
          halfHeight(static_cast<float>(height) * 0.5F),
          strength(amount) {}

    /// The source position of output pixel (x, y).
    std::pair<float, float> operator()(int x, int y) const {
        auto const atX = static_cast<float>(x);
        auto const atY = static_cast<float>(y);
        float const u = atX / halfWidth - 1.0F;
        float const v = atY / halfHeight - 1.0F;
        float const r = std::sqrt(u * u + v * v);
        if (r >= 1.0F) return {atX, atY};
        float const scale = GetFalloff(r) * strength + 1.0F;
        return {(scale * u + 1.0F) * halfWidth, (scale * v + 1.0F) * halfHeight};
    }

private:
    /// The Hermite segment from 1 to 0 with level ends; in double, narrowed once.
    static float GetFalloff(float r) {
        double const t = r;
        double const t2 = t * t;
        double const t3 = t2 * t;
        return static_cast<float>(2 * t3 - 3 * t2 + 1);
    }

    float halfWidth;
    float halfHeight;
    float strength;
};

} // namespace Velnor::Proc::Kernels
