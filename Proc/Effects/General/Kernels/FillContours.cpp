#include "Proc/Effects/General/Kernels/FillContours.h"

#include <algorithm>
#include <cmath>

namespace Velnor::Proc::Kernels {
namespace {

/// Where the contours cross a height, from left to right.
void FindCrossings(std::vector<Contour> const& contours, double height, std::vector<double>& crossings) {
    crossings.clear();
    for (Contour const& contour : contours)
        for (std::size_t i = 0; i < contour.size(); ++i) {
            ContourPoint const& a = contour[i];
            ContourPoint const& b = contour[(i + 1) % contour.size()];
            if ((a.y <= height) == (b.y <= height)) continue;
            crossings.push_back(a.x + (b.x - a.x) * (height - a.y) / (b.y - a.y));
        }
    std::ranges::sort(crossings);
}

/// Adds to each pixel the part of it that lies between two places.
void AddSpan(double from, double to, std::vector<double>& shares) {
    double const width = static_cast<double>(shares.size());
    from = std::clamp(from, 0.0, width);
    to = std::clamp(to, 0.0, width);
    for (auto x = static_cast<std::size_t>(from); static_cast<double>(x) < to; ++x) {
        double const left = static_cast<double>(x);
        shares[x] += std::min(to, left + 1) - std::max(from, left);
    }
}

} // namespace

void FillContours(std::vector<Contour> const& contours, MutablePlane const& plane) {
    constexpr int HEIGHTS = 16;
    std::vector<double> shares(plane.GetWidth());
    std::vector<double> crossings;
    for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) {
        std::ranges::fill(shares, 0.0);
        for (int i = 0; i < HEIGHTS; ++i) {
            FindCrossings(contours, static_cast<double>(y) + (i + 0.5) / HEIGHTS, crossings);
            for (std::size_t k = 0; k + 1 < crossings.size(); k += 2) AddSpan(crossings[k], crossings[k + 1], shares);
        }
        unsigned char* const row = plane.GetRow(y);
        for (std::size_t x = 0; x < shares.size(); ++x)
            row[x] = static_cast<unsigned char>(std::min(shares[x] * (255.0 / HEIGHTS) + 0.5, 255.0));
    }
}

} // namespace Velnor::Proc::Kernels
