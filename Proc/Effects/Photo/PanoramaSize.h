#pragma once

#include <cstdint>
#include <vector>

namespace Velnor::Proc {

/// Where a picture would lie in a panorama, in pixels.
struct PanoramaPlace {
    std::int64_t x, y, width, height;
};

/// Throws EffectException, before anything of that size is allocated, when a picture or all of them together would be
/// larger than a panorama can be. Pictures that match by chance alone would be enlarged, or pushed away, without end.
void RequirePossibleSize(std::vector<PanoramaPlace> const& places);

} // namespace Velnor::Proc
