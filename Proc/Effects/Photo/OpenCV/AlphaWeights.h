#pragma once

#include "Proc/Interfaces/IData.h"

#include <opencv2/core.hpp>

#include <functional>

namespace Velnor::Proc {

/// How much the colours of a plane's samples count in a mean: their alpha, 0 to 255, and a trace where that is 0, so
/// that among what is clear there are means too. One channel of floats; empty where all count alike, and for a plane of
/// alpha alone.
cv::Mat MakeAlphaWeights(IDataVideo const& picture, unsigned char plane);

/// A blur that is linear, of any number of channels of floats.
using LinearBlur = std::function<cv::Mat(cv::Mat const&)>;

/// Writes the blurred colours of samples, each counting by its weight; the channel of alpha, or -1, is left out.
void BlurWeighted(cv::Mat const& source, cv::Mat const& weights, int alphaChannel, LinearBlur const& blur,
                  cv::Mat& target);

} // namespace Velnor::Proc
