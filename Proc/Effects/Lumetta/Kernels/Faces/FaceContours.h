#pragma once

#include "Proc/Effects/Lumetta/Kernels/Faces/FaceGeometry.h"
#include "Proc/Effects/Lumetta/Kernels/Shapes/DrawContour.h"

#include <numbers>

namespace Velnor::Proc::Kernels {

/// The landmarks of a part as a line, or as a closed outline.
inline Contour MakeContour(Face const& face, Face::Part const& part, bool isClosed) {
    auto const points = face.Get(part);
    return {{points.begin(), points.end()}, isClosed, false, 0};
}

/// The outline of a face: the jaw, and over the forehead, where there are no landmarks, half an ellipse that rises
/// above the ears by two thirds of what the chin lies below them.
inline Contour MakeFaceOutline(Face const& face) {
    constexpr int STEPS = 16;
    constexpr float RISE = 0.67F;
    Contour outline = MakeContour(face, Face::JAW, true);
    Face::Point const first = face.Get(Face::JAW).front();
    Face::Point const last = face.Get(Face::JAW).back();
    Face::Point const middle = (first + last) * 0.5F;
    Face::Point const up = (middle - face.Get(Face::JAW)[8]) * RISE;
    for (int i = 1; i < STEPS; ++i) {
        float const angle = std::numbers::pi_v<float> * static_cast<float>(i) / STEPS;
        outline.points.push_back(middle + (last - middle) * std::cos(angle) + up * std::sin(angle));
    }
    return outline;
}

} // namespace Velnor::Proc::Kernels
