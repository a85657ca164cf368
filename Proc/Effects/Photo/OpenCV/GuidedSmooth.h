#pragma once

#include <opencv2/core.hpp>

namespace Velnor::Proc {

/// How a plane is smoothed.
struct GuidedSmoothing {
    cv::Size reach;   ///< Half-widths of the window, in samples, at least 1.
    double tolerance; ///< Variance that counts as half an edge; infinite where nothing is kept.
    double sharpen;   ///< Part of the kept detail that is added once more.
};

/// Smooths surfaces and keeps edges, by a guided filter whose guide is the plane itself:
///
///     keep   = variance / (variance + tolerance) in the window     1 at an edge, 0 on an even surface
///     result = mean(keep) * value + mean((1 - keep) * mean) + sharpen * mean(keep) * detail
///     detail = value - value blurred by a gaussian of deviation 1.5
///
/// Rows are handled one after another: beside the two planes it holds twice the window's rows, in floats. Outside of
/// the plane its samples are mirrored.
///
/// @param source   8 bits, any number of channels, each smoothed for itself
/// @param weights  how much a sample counts in means, above 0: floats of one channel; empty where all count alike
/// @param target   as the source, and apart from it
///
/// K. He, J. Sun, X. Tang, "Guided Image Filtering", ECCV 2010.
void SmoothGuided(cv::Mat const& source, cv::Mat const& weights, cv::Mat& target, GuidedSmoothing const& smoothing);

} // namespace Velnor::Proc
