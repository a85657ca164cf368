#pragma once

#include <opencv2/stitching/detail/blenders.hpp>

#include <vector>

namespace Velnor::Proc {

/// Blends in frequency bands as OpenCV does, but the result strip by strip: the bands of a whole panorama, and those of
/// each picture in it, take twenty times its bytes. A strip is blended together with as many rows on both sides as can
/// have an influence on it, so that the samples are the same.
class StripBlender : public cv::detail::Blender {
public:
    using cv::detail::Blender::prepare;
    void prepare(cv::Rect area) override;
    void feed(cv::InputArray image, cv::InputArray mask, cv::Point corner) override;

    /// The result stays here: who calls, OpenCV's stitcher, would copy it.
    void blend(cv::InputOutputArray, cv::InputOutputArray) override;

    cv::Mat const& GetResult() const { return result; }     ///< Three channels of 8 bits.
    cv::Mat const& GetCoverage() const { return coverage; } ///< 255 where there is a picture, 0 elsewhere.

private:
    struct Picture {
        cv::Mat samples; ///< 8 bits, which they had before they were handed over in 16.
        cv::Mat mask;
        cv::Point corner; ///< In the panorama.
    };

    void BlendStrip(cv::Range rows);

    cv::Rect area;
    std::vector<Picture> pictures;
    cv::Mat result;
    cv::Mat coverage;
};

} // namespace Velnor::Proc
