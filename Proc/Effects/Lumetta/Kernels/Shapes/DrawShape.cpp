#include "Proc/Effects/Lumetta/Kernels/Shapes/DrawShape.h"

#include "Proc/Effects/Kit/Targets.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <vector>

// A shape is measured in a unit of its own (pixels, or fractions of the way to the centre): how deep inside the outline
// a pixel lies, and how many pixels the unit is long there. All are straight-line functions of x along a row, or square
// roots of sums of their squares, so rows are vectorised by the compiler.

namespace Velnor::Proc::Kernels {
namespace {

struct Depth {
    float units;  ///< Inwards from the outline; negative outside.
    float pixels; ///< Length of a unit, in pixels.
};

/// From the depth to the level.
class Edge {
public:
    Edge(double width, MaskShape const& shape)
        : feather(static_cast<float>(width)),
          invFeather(feather > 0 ? 1 / feather : std::numeric_limits<float>::max()),
          outside(static_cast<float>(shape.outside) + 0.5F),
          range(static_cast<float>(shape.inside) - static_cast<float>(shape.outside)) {}

    VELNOR_INLINE unsigned char GetLevel(Depth const& depth) const {
        float const slope = std::min(depth.pixels, invFeather);
        float const t = std::clamp((depth.units - feather * 0.5F) * slope + 0.5F, 0.0F, 1.0F);
        float const curve = t * t * t * (t * (t * 6.0F - 15.0F) + 10.0F);
        // Coverage is linear in the distance; between one and two pixels of width the curve takes over.
        float const share = std::clamp(feather * depth.pixels - 1.0F, 0.0F, 1.0F);
        return static_cast<unsigned char>(static_cast<int>(outside + range * (t + share * (curve - t))));
    }

private:
    float feather; ///< In the shape's unit.
    float invFeather;
    float outside; ///< With half a level, for rounding.
    float range;
};

/// A straight-line function of a pixel's column, at pixel centres.
struct Line {
    float start, step;
    VELNOR_INLINE float At(float x) const { return start + step * x; }
};

/// The shape's own axes, turned, on one row. The origin is the shape's centre.
class Axes {
public:
    explicit Axes(MaskShape const& shape)
        : centreX(shape.centreX), centreY(shape.centreY), cosine(std::cos(shape.angle)), sine(std::sin(shape.angle)) {}

    /// The function `alongX * x' + alongY * y'` of the turned coordinates.
    Line Make(double alongX, double alongY, std::uint64_t y) const {
        double const perColumn = alongX * cosine - alongY * sine;
        double const perRow = alongX * sine + alongY * cosine;
        double const start = perColumn * (0.5 - centreX) + perRow * (static_cast<double>(y) + 0.5 - centreY);
        return {static_cast<float>(start), static_cast<float>(perColumn)};
    }

private:
    double centreX, centreY, cosine, sine;
};

template <class Measure>
VELNOR_INLINE void DrawSpanInline(unsigned char* row, int from, int to, Edge const& givenEdge, Measure const& given) {
    Edge const edge = givenEdge; // bytes may alias anything but locals
    Measure const measure = given;
    for (int x = from; x < to; ++x) row[x] = edge.GetLevel(measure(static_cast<float>(x)));
}

template <class Measure>
void DrawSpanBaseline(unsigned char* row, int from, int to, Edge const& edge, Measure const& measure) {
    DrawSpanInline(row, from, to, edge, measure);
}

// The same code once more, for the wide registers of newer processors; without fused operations, so the same bytes.
template <class Measure>
VELNOR_TARGET("avx2")
void DrawSpanAvx2(unsigned char* row, int from, int to, Edge const& edge, Measure const& measure) {
    DrawSpanInline(row, from, to, edge, measure);
}

template <class Measure>
void DrawSpan(unsigned char* row, int from, int to, Edge const& edge, Measure const& measure) {
    constexpr Variants SPAN{Variant{Target::Scalar, &DrawSpanBaseline<Measure>},
                            Variant{Target::Avx2, &DrawSpanAvx2<Measure>}};
    SPAN.Choose()(row, from, to, edge, measure);
}

/// Distance from a quadrant's corner at the origin, negative within the quadrant.
VELNOR_INLINE float CornerDistance(float x, float y) {
    float const outX = std::max(x, 0.0F);
    float const outY = std::max(y, 0.0F);
    return std::sqrt(outX * outX + outY * outY) + std::min(std::max(x, y), 0.0F);
}

void DrawEllipse(MutablePlane const& plane, MaskShape const& shape) {
    Axes const axes(shape);
    Edge const edge(shape.feather, shape);
    auto const shorter = static_cast<float>(std::min(shape.halfWidth, shape.halfHeight));
    auto const perX = static_cast<float>(1 / shape.halfWidth);
    auto const perY = static_cast<float>(1 / shape.halfHeight);
    for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) {
        Line const across = axes.Make(1 / shape.halfWidth, 0, y);
        Line const down = axes.Make(0, 1 / shape.halfHeight, y);
        DrawSpan(
            plane.GetRow(y), 0, static_cast<int>(plane.GetWidth()), edge, [=](float x) __attribute__((always_inline)) {
                float const u = across.At(x);
                float const v = down.At(x);
                float const square = u * u + v * v;
                // Pixels per unit by the length of the gradient, which is nowhere above that of the shorter axis.
                float const gradient = u * perX * (u * perX) + v * perY * (v * perY);
                float const pixels = std::sqrt(square / std::max(gradient, 1e-30F));
                return Depth{1 - std::sqrt(square), std::max(pixels, shorter)};
            });
    }
}

void DrawRectangle(MutablePlane const& plane, MaskShape const& shape) {
    Axes const axes(shape);
    double const shorter = std::min(shape.halfWidth, shape.halfHeight);
    Edge const edge(shape.feather * shorter, shape);
    double const radius = std::max(shape.corner, shape.feather) * shorter;
    auto const depth = static_cast<float>(radius);
    auto const halfWidth = static_cast<float>(shape.halfWidth - radius);
    auto const halfHeight = static_cast<float>(shape.halfHeight - radius);
    for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) {
        Line const across = axes.Make(1, 0, y);
        Line const down = axes.Make(0, 1, y);
        DrawSpan(
            plane.GetRow(y), 0, static_cast<int>(plane.GetWidth()), edge, [=](float x) __attribute__((always_inline)) {
                float const beyondX = std::abs(across.At(x)) - halfWidth;
                float const beyondY = std::abs(down.At(x)) - halfHeight;
                return Depth{depth - CornerDistance(beyondX, beyondY), 1};
            });
    }
}

void DrawBand(MutablePlane const& plane, MaskShape const& shape) {
    Axes const axes(shape);
    Edge const edge(shape.feather * shape.halfHeight, shape);
    auto const halfHeight = static_cast<float>(shape.halfHeight);
    for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) {
        Line const down = axes.Make(0, 1, y);
        DrawSpan(
            plane.GetRow(y), 0, static_cast<int>(plane.GetWidth()), edge, [=](float x) __attribute__((always_inline)) {
                return Depth{halfHeight - std::abs(down.At(x)), 1};
            });
    }
}

/// A side of the regular polygon in the unit circle, in coordinates scaled by the shape's half sizes.
struct Side {
    double normalX, normalY; ///< Outwards.
};

std::vector<Side> MakeSides(int count) {
    std::vector<Side> sides;
    for (int i = 0; i < count; ++i) {
        double const angle = std::numbers::pi * ((2.0 * i + 1) / count - 0.5);
        sides.push_back({std::cos(angle), std::sin(angle)});
    }
    return sides;
}

/// The side whose line lies farthest out at column x; of equals, the one that does so to the right.
std::size_t FindOuter(std::vector<Line> const& heights, float x) {
    std::size_t best = 0;
    for (std::size_t i = 1; i < heights.size(); ++i) {
        float const difference = heights[i].At(x) - heights[best].At(x);
        if (difference > 0 || (difference == 0 && heights[i].step > heights[best].step)) best = i;
    }
    return best;
}

/// The first column from which another side than `current` lies farther out, `width` where there is none.
int FindChange(std::vector<Line> const& heights, std::size_t current, int from, int width) {
    double first = width;
    for (Line const& other : heights) {
        double const gain = double{other.step} - double{heights[current].step};
        if (gain <= 0) continue;
        first = std::min(first, (double{heights[current].start} - double{other.start}) / gain);
    }
    return std::clamp(static_cast<int>(std::ceil(std::max(first, 0.0))), from + 1, width);
}

/// Draws a row side by side: a pixel's nearest point of a regular polygon is on the side whose line is farthest out.
void DrawPolygonRow(unsigned char* row, int width, std::uint64_t y, MaskShape const& shape, Edge const& edge,
                    std::vector<Side> const& sides, std::vector<Line>& heights) {
    Axes const axes(shape);
    double const core = 1 - shape.feather;
    double const step = std::numbers::pi / shape.sides;
    auto const depth = static_cast<float>(shape.feather * std::cos(step));
    auto const apothem = static_cast<float>(core * std::cos(step));
    auto const halfSide = static_cast<float>(core * std::sin(step));
    auto const perX = static_cast<float>(1 / shape.halfWidth);
    auto const perY = static_cast<float>(1 / shape.halfHeight);
    auto const make = [&](double x, double y1) { return axes.Make(x / shape.halfWidth, y1 / shape.halfHeight, y); };
    for (std::size_t i = 0; i < sides.size(); ++i) heights[i] = make(sides[i].normalX, sides[i].normalY);
    for (int from = 0; from < width;) {
        std::size_t const outer = FindOuter(heights, static_cast<float>(from));
        int const to = FindChange(heights, outer, from, width);
        Line const height = heights[outer];
        Line const along = make(-sides[outer].normalY, sides[outer].normalX);
        auto const normalX = static_cast<float>(sides[outer].normalX);
        auto const normalY = static_cast<float>(sides[outer].normalY);
        DrawSpan(
            row, from, to, edge, [=](float x) __attribute__((always_inline)) {
                float const above = height.At(x) - apothem;
                float const place = along.At(x);
                float const beyond = std::abs(place) - halfSide;
                float const outX = std::max(above, 1e-12F);
                float const outY = std::copysign(std::max(beyond, 0.0F), place);
                // The direction of the distance, in scaled coordinates, says how long a unit is.
                float const gradientX = (outX * normalX - outY * normalY) * perX;
                float const gradientY = (outX * normalY + outY * normalX) * perY;
                float const square = outX * outX + outY * outY;
                float const pixels = std::sqrt(square / (gradientX * gradientX + gradientY * gradientY));
                float const distance = above > 0 ? std::sqrt(square) : above;
                return Depth{depth - distance, pixels};
            });
        from = to;
    }
}

void DrawPolygon(MutablePlane const& plane, MaskShape const& shape) {
    Edge const edge(shape.feather * std::cos(std::numbers::pi / shape.sides), shape);
    std::vector<Side> const sides = MakeSides(shape.sides);
    std::vector<Line> heights(sides.size());
    for (std::uint64_t y = 0; y < plane.GetHeight(); ++y)
        DrawPolygonRow(plane.GetRow(y), static_cast<int>(plane.GetWidth()), y, shape, edge, sides, heights);
}

} // namespace

void DrawShape(MutablePlane const& plane, MaskShape const& shape) {
    bool const isEmpty = shape.halfHeight <= 0 || (shape.outline != Outline::Band && shape.halfWidth <= 0);
    if (isEmpty) {
        for (std::uint64_t y = 0; y < plane.GetHeight(); ++y)
            std::memset(plane.GetRow(y), shape.outside, plane.GetWidth());
        return;
    }
    switch (shape.outline) {
    case Outline::Ellipse:
        return DrawEllipse(plane, shape);
    case Outline::Rectangle:
        return DrawRectangle(plane, shape);
    case Outline::Band:
        return DrawBand(plane, shape);
    case Outline::Polygon:
        return DrawPolygon(plane, shape);
    }
}

} // namespace Velnor::Proc::Kernels
