#include "Proc/Effects/Lumetta/Kernels/Geometry/ScaleCurve.h"

#include <algorithm>
#include <cmath>

namespace Velnor::Proc::Kernels {

double Evaluate(ScaleCurve const& curve, double x) {
    double const t = (curve.t1 - curve.t0) * (x - curve.x0) / (curve.x1 - curve.x0) + curve.t0;
    double const t2 = t * t;
    double const t3 = t2 * t;
    double const value = curve.m0 * (t3 - 2 * t2 + t) + curve.y0 * (2 * t3 - 3 * t2 + 1) +
                         curve.y1 * (3 * t2 - 2 * t3) + curve.m1 * (t3 - t2);
    if (std::isnan(value)) return curve.y0;
    auto const [low, high] = std::minmax(curve.y0, curve.y1);
    return low > value ? low : std::min(high, value);
}

double PixelateScale(double strength, unsigned int width, unsigned int height) {
    constexpr double COARSEST_SIDE = 32.0;
    constexpr double START = 100.0 / 101.0;
    constexpr double END = 100.0;
    ScaleCurve const curve{.inputLow = START,
                           .inputHigh = END,
                           .y0 = COARSEST_SIDE / std::min(width, height),
                           .y1 = 1.0,
                           .x0 = START,
                           .x1 = END,
                           .t0 = 0.0,
                           .t1 = 1.0,
                           .firstRange = {0.0, 0.0101},
                           .secondRange = {0.0, 1.0},
                           .m0 = 0.0,
                           .m1 = 0.0};
    double const x = 100.0 / (strength + 1.0);
    return std::isfinite(x) ? Evaluate(curve, x) : curve.y0;
}

} // namespace Velnor::Proc::Kernels
