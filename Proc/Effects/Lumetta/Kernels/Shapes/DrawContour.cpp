#include "Proc/Effects/Lumetta/Kernels/Shapes/DrawContour.h"

#include <algorithm>
#include <cmath>

namespace Velnor::Proc::Kernels {
namespace {

struct Segment {
    Face::Point from, to;
};

std::vector<Segment> MakeSegments(Contour const& contour) {
    std::vector<Segment> segments;
    std::vector<Face::Point> const& points = contour.points;
    if (points.size() == 1) segments.push_back({points[0], points[0]});
    for (std::size_t i = 1; i < points.size(); ++i) segments.push_back({points[i - 1], points[i]});
    if (contour.isClosed && points.size() > 1) segments.push_back({points.back(), points.front()});
    return segments;
}

/// The columns or rows, from `first` to before `last`, that a stretch and a margin around it cover.
struct Span {
    int first, last;
    Span(float from, float to, float margin, std::uint64_t count) {
        auto const most = static_cast<float>(count);
        first = static_cast<int>(std::clamp(std::floor(from - margin), 0.0F, most));
        last = static_cast<int>(std::clamp(std::ceil(to + margin) + 1, 0.0F, most));
    }
};

/// Lowers the squared distances of a row to those from the segment.
void MeetSegment(Segment const& segment, Span const& columns, float y, float* squares) {
    float const dx = segment.to.x - segment.from.x;
    float const dy = segment.to.y - segment.from.y;
    float const square = dx * dx + dy * dy;
    float const inverse = square > 0 ? 1 / square : 0;
    float const atY = y - segment.from.y;
    for (int x = columns.first; x < columns.last; ++x) {
        float const atX = static_cast<float>(x) - segment.from.x;
        float const along = std::clamp((atX * dx + atY * dy) * inverse, 0.0F, 1.0F);
        float const offX = atX - along * dx;
        float const offY = atY - along * dy;
        squares[x] = std::min(squares[x], offX * offX + offY * offY);
    }
}

/// The columns at which a row enters and leaves what the segments enclose, in order.
void FindCrossings(std::vector<Segment> const& segments, float y, std::vector<float>& crossings) {
    crossings.clear();
    for (Segment const& segment : segments) {
        if ((segment.from.y <= y) == (segment.to.y <= y)) continue;
        float const share = (y - segment.from.y) / (segment.to.y - segment.from.y);
        crossings.push_back(segment.from.x + share * (segment.to.x - segment.from.x));
    }
    std::ranges::sort(crossings);
}

unsigned char GetLevel(float depth, float feather) {
    float const linear = std::clamp(depth / feather + 0.5F, 0.0F, 1.0F);
    // A pixel's share is linear; a wider edge has no slope at its ends, or they would show.
    float const share = feather > 1 ? linear * linear * (3 - 2 * linear) : linear;
    return static_cast<unsigned char>(share * 255 + 0.5F);
}

} // namespace

void DrawContour(MutablePlane const& mask, Contour const& contour, float feather) {
    if (contour.points.empty()) return;
    std::vector<Segment> const segments = MakeSegments(contour);
    auto const [left, right] = std::ranges::minmax(contour.points, {}, &Face::Point::x);
    auto const [top, bottom] = std::ranges::minmax(contour.points, {}, &Face::Point::y);
    float const edge = std::max(feather, 1.0F);
    float const margin = contour.grow + edge;
    Span const columns(left.x, right.x, margin, mask.GetWidth());
    Span const rows(top.y, bottom.y, margin, mask.GetHeight());
    std::vector<float> squares(mask.GetWidth());
    std::vector<float> crossings;
    for (int row = rows.first; row < rows.last; ++row) {
        auto const y = static_cast<float>(row);
        std::fill(squares.begin() + columns.first, squares.begin() + columns.last, 1e30F);
        for (Segment const& segment : segments) MeetSegment(segment, columns, y, squares.data());
        if (contour.isFilled) FindCrossings(segments, y, crossings);
        unsigned char* const levels = mask.GetRow(static_cast<std::uint64_t>(row));
        std::size_t passed = 0;
        for (int x = columns.first; x < columns.last; ++x) {
            while (passed < crossings.size() && crossings[passed] <= static_cast<float>(x)) ++passed;
            float const distance = std::sqrt(squares[static_cast<std::size_t>(x)]);
            float const inside = passed % 2 == 1 ? distance : -distance;
            levels[x] = std::max(levels[x], GetLevel(inside + contour.grow, edge));
        }
    }
}

} // namespace Velnor::Proc::Kernels
