#pragma once

#include "Proc/Interfaces/Plane.h"

#include <span>
#include <vector>

namespace Velnor::Proc::Kernels {

enum class Stroke : unsigned char { None, Subject, Background };

/// Where a face is, in pixels.
struct FaceBox {
    float left, top, width, height;
};

/// Marks what is surely subject, and what surely background. It begins with what stands out (see FindSaliency) or, when
/// there are faces, with the persons whose they are: head and shoulders. Then colours decide with it: models of both
/// kinds are made of what each seems to hold, and tell what it holds, in turns. Either kind is missing where nothing
/// stands out.
///
/// `rgb` has 3 bytes a pixel; a mark for each comes back, row after row. Meant for pictures of up to 256 x 256.
std::vector<Stroke> FindSubjectStrokes(ConstPlane const& rgb, std::span<FaceBox const> faces);

} // namespace Velnor::Proc::Kernels
