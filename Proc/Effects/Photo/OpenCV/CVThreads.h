#pragma once

#include "Core/Processors.h"

#include <opencv2/core/utility.hpp>

namespace Velnor::Proc {

/// Has OpenCV use as many threads as one picture may. Of the process, so only the first module that asks changes it.
inline void ShareProcessorsWithOpenCV() {
    auto const threads = static_cast<int>(Core::GetThreadsPerPicture());
    if (cv::getNumThreads() != threads) cv::setNumThreads(threads);
}

} // namespace Velnor::Proc
