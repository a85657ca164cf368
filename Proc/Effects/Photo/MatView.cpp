#include "Proc/Effects/Photo/MatView.h"

#include "Proc/Interfaces/ProcException.h"

#include <string>

namespace Velnor::Proc {

cv::Mat AsMat(MutablePlane const& plane) {
    auto const channels = static_cast<int>(plane.GetSampleBytes());
    return cv::Mat(static_cast<int>(plane.GetHeight()), static_cast<int>(plane.GetWidth()) / channels, CV_8UC(channels),
                   plane.GetData(), static_cast<std::size_t>(plane.GetStride()));
}

cv::Mat const AsMat(ConstPlane const& plane) {
    auto const channels = static_cast<int>(plane.GetSampleBytes());
    return cv::Mat(static_cast<int>(plane.GetHeight()), static_cast<int>(plane.GetWidth()) / channels, CV_8UC(channels),
                   const_cast<unsigned char*>(plane.GetData()), static_cast<std::size_t>(plane.GetStride()));
}

void ThrowOpenCV(std::string_view effect, cv::Exception const& error) {
    VELNOR_THROW(ProcException,
                 "OpenCV fails in the " + std::string(effect) + " effect: " + error.err + " (" + error.func + ").");
}

} // namespace Velnor::Proc
