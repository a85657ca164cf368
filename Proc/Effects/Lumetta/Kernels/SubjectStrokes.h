#pragma once

#include "Proc/Interfaces/Plane.h"

#include <vector>

namespace Velnor::Proc::Kernels {

enum class Stroke : unsigned char { None, Subject, Background };

/// Marks what is surely subject, and what surely background, by how much stands out: the minimum barrier distance from
/// the borders in three scans (J. Zhang et al., "Minimum Barrier Salient Object Detection at 80 FPS", ICCV 2015) and the
/// contrast to the mean colours of the borders, both in OKLab, favouring the middle. The lower border is no background
/// by itself: most subjects are cut by it. Either kind is missing where nothing stands out.
///
/// `rgb` has 3 bytes a pixel; a mark for each comes back, row after row. Meant for pictures of up to 256 x 256.
std::vector<Stroke> FindSubjectStrokes(ConstPlane const& rgb);

} // namespace Velnor::Proc::Kernels
