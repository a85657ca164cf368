#pragma once

#include "Proc/Interfaces/IData.h"

#include <opencv2/core.hpp>

#include <string_view>
#include <utility>

namespace Velnor::Proc {

/// A plane as OpenCV sees it, of 1 to 4 channels of 8 bits. The samples stay the picture's.
cv::Mat AsMat(MutablePlane const& plane);
/// For reading only: OpenCV has no matrix of constants.
cv::Mat const AsMat(ConstPlane const& plane);

[[noreturn]] void ThrowOpenCV(std::string_view effect, cv::Exception const& error);

/// Runs what calls OpenCV for the effect of that name. Throws ProcException with OpenCV's text in place of its own type,
/// which callers do not know.
template <class Work>
decltype(auto) WithOpenCV(std::string_view effect, Work&& work) {
    try {
        return std::forward<Work>(work)();
    } catch (cv::Exception const& error) {
        ThrowOpenCV(effect, error);
    }
}

} // namespace Velnor::Proc
