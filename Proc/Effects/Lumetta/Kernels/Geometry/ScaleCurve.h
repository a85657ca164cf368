#pragma once

namespace Velnor::Proc::Kernels {

/// A segment of a cubic Hermite curve, clamped between its two ends.
struct ScaleCurve {
    double inputLow, inputHigh; ///< The inputs that the curve is meant for. Inputs beyond are not clamped to them.
    double y0, y1;              ///< Output at the start and at the end; the output never leaves their interval.
    double x0, x1;              ///< Domain. The parameter runs from t0 at x0 to t1 at x1 and goes on outside.
    double t0, t1;
    double firstRange[2], secondRange[2]; ///< Not read by Evaluate.
    double m0, m1;                        ///< Tangents at the start and at the end.
};

/// The curve's output at x. Where that is no number, y0.
double Evaluate(ScaleCurve const& curve, double x);

/// The factor by which pixelation shrinks a picture: 1 at strength 0, at strength 100 the one that makes the shorter
/// side 32 pixels long, in between a smoothstep of 100 / (strength + 1): steep up to about 10, nearly flat from 20 on.
/// A picture whose shorter side is under 32 pixels is enlarged.
/// @param strength       0 to 100; any other gives a factor between the two ends, -1 and NaN that of strength 100
/// @param width, height  in pixels, 1 or more
double PixelateScale(double strength, unsigned int width, unsigned int height);

} // namespace Velnor::Proc::Kernels
