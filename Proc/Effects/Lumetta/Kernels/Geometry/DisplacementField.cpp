#include "Proc/Effects/Lumetta/Kernels/Geometry/DisplacementField.h"

#include <algorithm>
#include <cmath>

namespace Velnor::Proc::Kernels {
namespace {

/// A brush on its way, in 32-bit numbers. Lengths along and across the way are in brush radii.
class Brush {
public:
    Brush(PushStroke const& stroke, int size, double strength)
        : fromX(static_cast<float>(stroke.fromX)),
          fromY(static_cast<float>(stroke.fromY)),
          radius(static_cast<float>(size) * 0.5F),
          peak(static_cast<float>(strength * size * 0.2 / 100)) {
        std::int64_t const wayX = std::int64_t{stroke.toX} - stroke.fromX;
        std::int64_t const wayY = std::int64_t{stroke.toY} - stroke.fromY;
        auto const x = static_cast<float>(wayX);
        auto const y = static_cast<float>(wayY);
        auto const square = [](std::int64_t way) {
            return static_cast<std::uint64_t>(way) * static_cast<std::uint64_t>(way);
        };
        float const length = std::sqrt(static_cast<float>(square(wayX) + square(wayY)));
        directionX = x / length;
        directionY = y / length;
        end = (directionX * x + directionY * y) / radius;
    }

    void Push(int x, int y, DisplacementField::Pair& pair) const {
        float const distance = FindDistance(static_cast<float>(x) - fromX, static_cast<float>(y) - fromY);
        if (distance >= 1) return;
        float const amplitude = FindAmplitude(distance);
        float const before = std::sqrt(pair.x * pair.x + pair.y * pair.y);
        if (before < 1e-5F) {
            pair = {directionX * amplitude, directionY * amplitude};
            return;
        }
        float const scale = std::max(amplitude, before) / (before + amplitude);
        pair = {(pair.x + directionX * amplitude) * scale, (pair.y + directionY * amplitude) * scale};
    }

private:
    /// From the stroke, whose ends are round.
    float FindDistance(float x, float y) const {
        float const along = (directionX * x + directionY * y) / radius;
        float const across = (directionX * y - directionY * x) / radius;
        if (along < 0) return std::sqrt(along * along + across * across);
        if (along > end) return std::sqrt((along - end) * (along - end) + across * across);
        return std::abs(across);
    }

    float FindAmplitude(float distance) const {
        constexpr float CORE = 0.25F;
        if (distance < CORE) return peak;
        float const s = (distance - CORE) / (1 - CORE);
        return (2 * s * s * s - 3 * s * s + 1) * peak;
    }

    float fromX, fromY;
    float radius; ///< Pixels.
    float peak;   ///< Pixels.
    float directionX = 0, directionY = 0;
    float end = 0; ///< Of the stroke, in radii from its start.
};

} // namespace

Box DisplacementField::FindBox(PushStroke const& stroke, int size) const {
    bool const hasLength = stroke.fromX != stroke.toX || stroke.fromY != stroke.toY;
    if (!hasLength || size <= 0) return {};
    // Halves of whole numbers: the box of an odd brush reaches a pixel farther to the right and down.
    std::int64_t const half = size / 2;
    std::int64_t const x0 = std::max<std::int64_t>(std::min(stroke.fromX, stroke.toX) - half, 0);
    std::int64_t const y0 = std::max<std::int64_t>(std::min(stroke.fromY, stroke.toY) - half, 0);
    std::int64_t const x1 = std::min<std::int64_t>(std::max(stroke.fromX, stroke.toX) - half + size, width);
    std::int64_t const y1 = std::min<std::int64_t>(std::max(stroke.fromY, stroke.toY) - half + size, height);
    if (x0 >= width || y0 >= height || x0 >= x1 || y0 >= y1) return {};
    return {static_cast<int>(x0), static_cast<int>(y0), static_cast<int>(x1), static_cast<int>(y1)};
}

Box DisplacementField::AddStroke(PushStroke const& stroke, int size, double strength) {
    Box const box = FindBox(stroke, size);
    Brush const brush(stroke, size, strength);
    for (int y = box.y0; y < box.y1; ++y) {
        Pair* const row = pairs.data() + Place(0, y);
        for (int x = box.x0; x < box.x1; ++x) brush.Push(x, y, row[x]);
    }
    return box;
}

std::vector<DisplacementField::Pair> DisplacementField::Read(Box const& box) const {
    std::vector<Pair> values;
    values.reserve(static_cast<std::size_t>(box.x1 - box.x0) * static_cast<std::size_t>(box.y1 - box.y0));
    for (int y = box.y0; y < box.y1; ++y)
        values.insert(values.end(), pairs.data() + Place(box.x0, y), pairs.data() + Place(box.x1, y));
    return values;
}

void DisplacementField::Write(Box const& box, std::vector<Pair> const& values) {
    auto const columns = box.x1 - box.x0;
    auto from = values.begin();
    for (int y = box.y0; y < box.y1; ++y, from += columns) std::copy_n(from, columns, pairs.data() + Place(box.x0, y));
}

} // namespace Velnor::Proc::Kernels
