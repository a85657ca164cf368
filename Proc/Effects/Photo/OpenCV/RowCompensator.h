#pragma once

#include <opencv2/stitching/detail/exposure_compensate.hpp>

namespace Velnor::Proc {

/// OpenCV's compensation of exposure by blocks, its gains interpolated row by row: a map of them for each sample of a
/// picture takes five times the picture's bytes.
class RowCompensator : public cv::detail::BlocksGainCompensator {
public:
    void apply(int index, cv::Point corner, cv::InputOutputArray image, cv::InputArray mask) override;
};

} // namespace Velnor::Proc
