#pragma once

#include <opencv2/core.hpp>

namespace Velnor::Proc {

/// Replaces each sample by the smallest of those at distances x, y with x^2 + y^2 <= radius^2, in every channel for
/// itself; samples outside of the picture do not count. Time grows with the radius, not with its square.
void ErodeByDisc(cv::Mat& samples, int radius);

/// The same with the largest.
void DilateByDisc(cv::Mat& samples, int radius);

} // namespace Velnor::Proc
