#include "Proc/Effects/Lumetta/Kernels/Style/GlassCells.h"

#include "Proc/Effects/Lumetta/Kernels/Blur/BoxMean.h"
#include "Proc/Effects/Lumetta/Kernels/Style/GlassSquares.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace Velnor::Proc::Kernels {
namespace {

constexpr int ITERATIONS = 5;
constexpr int SMOOTHING = 20;   ///< Radius of the mean before colours are compared, parts of a side.
constexpr int CRUMB = 8;        ///< Parts of a cell's square below which what is cut off from it is a crumb.
constexpr float HALF_SIDE = 20; ///< Levels that weigh as much as half a side, at full awareness.

struct Center {
    float x = 0;
    float y = 0;
    float side = 0; ///< Of its square.
    std::array<float, 3> colour{};
};

struct Sum {
    double x = 0;
    double y = 0;
    std::array<std::uint64_t, 3> colour{};
    std::uint64_t pixels = 0;
};

/// Everything that the search keeps.
struct Search {
    std::vector<unsigned char> colours; ///< Of the smoothed picture, 3 bytes a pixel.
    int width;
    int height;
    float colourWeight;
    std::vector<Center> centers;
    std::vector<std::uint32_t> labels;
    std::vector<float> distances;
};

/// The picture as 3 bytes a pixel, each the mean of a square about it.
std::vector<unsigned char> Smooth(ConstPlane const& picture, unsigned int pixelBytes, std::size_t radius) {
    std::size_t const width = picture.GetWidth() / pixelBytes;
    std::size_t const height = picture.GetHeight();
    std::vector<unsigned char> result(width * height * 3);
    FloatPlane mean(width, height);
    FloatPlane scratch(width, height);
    for (std::size_t k = 0; k < 3; ++k) {
        for (std::size_t y = 0; y < height; ++y)
            for (std::size_t x = 0; x < width; ++x)
                mean.GetRow(y)[x] = static_cast<float>(picture.GetRow(y)[x * pixelBytes + k]);
        if (radius > 0) BoxMean(mean, radius, scratch);
        for (std::size_t i = 0; i < width * height; ++i)
            result[i * 3 + k] = static_cast<unsigned char>(mean.values[i] + 0.5F);
    }
    return result;
}

/// A centre in each square, moved at random within its middle; labels by the squares.
void PlaceCenters(Search& search, std::vector<GlassSquare> const& squares, std::uint32_t seed) {
    std::minstd_rand random(seed == 0 ? 1 : seed); // Of the standard, so the same everywhere.
    auto const place = [&](int from, int to) {
        float const part = 0.5F + static_cast<float>(random() % 1000) / 1000 * 0.7F - 0.35F;
        return static_cast<float>(from) + part * static_cast<float>(to - from) - 0.5F;
    };
    auto const columns = static_cast<std::size_t>(search.width);
    search.labels.resize(columns * static_cast<std::size_t>(search.height));
    for (GlassSquare const& square : squares) {
        Center center;
        center.x = place(square.left, square.right);
        center.y = place(square.top, square.bottom);
        center.side = std::sqrt(static_cast<float>((square.right - square.left) * (square.bottom - square.top)));
        auto const at = [](float value, int count) {
            return static_cast<std::size_t>(std::clamp(static_cast<int>(value + 0.5F), 0, count - 1));
        };
        std::size_t const pixel = at(center.y, search.height) * columns + at(center.x, search.width);
        for (std::size_t k = 0; k < 3; ++k) center.colour[k] = search.colours[pixel * 3 + k];
        auto const label = static_cast<std::uint32_t>(search.centers.size());
        for (int y = square.top; y < square.bottom; ++y)
            std::fill_n(search.labels.begin() + std::ptrdiff_t{y} * search.width + square.left,
                        square.right - square.left, label);
        search.centers.push_back(center);
    }
}

/// Gives each pixel near a centre to it when it is nearer to it than to the one it has.
void Claim(Search& search, std::uint32_t label) {
    Center const& center = search.centers[label];
    float const reach = 1.5F * center.side + 1;
    float const perSquare = 1 / (center.side * center.side);
    auto const from = [&](float at) { return std::max(0, static_cast<int>(at - reach)); };
    auto const to = [&](float at, int count) { return std::min(count - 1, static_cast<int>(at + reach) + 1); };
    int const left = from(center.x);
    int const right = to(center.x, search.width);
    for (int y = from(center.y); y <= to(center.y, search.height); ++y) {
        auto const start = static_cast<std::size_t>(y) * static_cast<std::size_t>(search.width);
        unsigned char const* const row = search.colours.data() + start * 3;
        float const dy = static_cast<float>(y) - center.y;
        for (int x = left; x <= right; ++x) {
            unsigned char const* const pixel = row + std::ptrdiff_t{3} * x;
            float const dx = static_cast<float>(x) - center.x;
            float colour = 0;
            for (std::size_t k = 0; k < 3; ++k) {
                float const d = static_cast<float>(pixel[k]) - center.colour[k];
                colour += d * d;
            }
            float const distance = (dx * dx + dy * dy) * perSquare + search.colourWeight * colour;
            std::size_t const at = start + static_cast<std::size_t>(x);
            if (distance >= search.distances[at]) continue;
            search.distances[at] = distance;
            search.labels[at] = label;
        }
    }
}

std::vector<Sum> SumUp(Search const& search) {
    std::vector<Sum> sums(search.centers.size());
    std::size_t at = 0;
    unsigned char const* pixel = search.colours.data();
    for (int y = 0; y < search.height; ++y) {
        for (int x = 0; x < search.width; ++x, pixel += 3) {
            Sum& sum = sums[search.labels[at++]];
            sum.x += x;
            sum.y += y;
            for (std::size_t k = 0; k < 3; ++k) sum.colour[k] += pixel[k];
            ++sum.pixels;
        }
    }
    return sums;
}

void MoveCenters(Search& search) {
    std::vector<Sum> const sums = SumUp(search);
    for (std::size_t i = 0; i < sums.size(); ++i) {
        if (sums[i].pixels == 0) continue;
        auto const count = static_cast<double>(sums[i].pixels);
        Center& center = search.centers[i];
        center.x = static_cast<float>(sums[i].x / count);
        center.y = static_cast<float>(sums[i].y / count);
        for (std::size_t k = 0; k < 3; ++k)
            center.colour[k] = static_cast<float>(static_cast<double>(sums[i].colour[k]) / count);
    }
}

/// The connected pixels of one label from `start`, marked as seen.
void FindPatch(Search const& search, std::uint32_t start, std::vector<bool>& seen, std::vector<std::uint32_t>& patch) {
    auto const width = static_cast<std::uint32_t>(search.width);
    patch.assign(1, start);
    seen[start] = true;
    auto const visit = [&](std::uint32_t at) {
        if (seen[at] || search.labels[at] != search.labels[start]) return;
        seen[at] = true;
        patch.push_back(at);
    };
    for (std::size_t i = 0; i < patch.size(); ++i) {
        std::uint32_t const at = patch[i];
        std::uint32_t const x = at % width;
        if (x > 0) visit(at - 1);
        if (x + 1 < width) visit(at + 1);
        if (at >= width) visit(at - width);
        if (at + width < search.labels.size()) visit(at + width);
    }
}

/// Small patches take the label of the pixel left of their first or above it.
void MergeCrumbs(Search& search) {
    std::vector<bool> seen(search.labels.size());
    std::vector<std::uint32_t> patch;
    auto const width = static_cast<std::uint32_t>(search.width);
    for (std::uint32_t start = 0; start < search.labels.size(); ++start) {
        if (seen[start]) continue;
        FindPatch(search, start, seen, patch);
        float const side = search.centers[search.labels[start]].side;
        if (start == 0 || static_cast<float>(patch.size()) * CRUMB >= side * side) continue;
        std::uint32_t const next = search.labels[start % width > 0 ? start - 1 : start - width];
        for (std::uint32_t const at : patch) search.labels[at] = next;
    }
}

} // namespace

GlassCells FindCells(ConstPlane const& picture, unsigned int pixelBytes, CellShape const& shape) {
    double const side = std::max(shape.side, 2.0);
    Search search;
    search.width = static_cast<int>(picture.GetWidth() / pixelBytes);
    search.height = static_cast<int>(picture.GetHeight());
    search.colours = Smooth(picture, pixelBytes, static_cast<std::size_t>(side / SMOOTHING));
    auto const perLevel = static_cast<float>(shape.edgeAwareness) / 2 / HALF_SIDE;
    search.colourWeight = perLevel * perLevel;
    auto const stride = std::int64_t{3} * search.width;
    ConstPlane const smooth(search.colours.data(), stride, static_cast<std::uint64_t>(stride), picture.GetHeight(), 3);
    PlaceCenters(search, DivideByDetail(smooth, side, shape.edgeAwareness), shape.seed);
    for (int i = 0; i < ITERATIONS; ++i) {
        search.distances.assign(search.labels.size(), std::numeric_limits<float>::max());
        for (std::uint32_t label = 0; label < search.centers.size(); ++label) Claim(search, label);
        MoveCenters(search);
    }
    MergeCrumbs(search);
    MoveCenters(search);
    GlassCells cells;
    cells.width = static_cast<std::uint32_t>(search.width);
    for (Center const& center : search.centers) {
        auto const byte = [&](std::size_t k) { return static_cast<unsigned char>(center.colour[k] + 0.5F); };
        cells.colours.push_back({byte(0), byte(1), byte(2)});
        cells.sides.push_back(center.side);
    }
    cells.labels = std::move(search.labels);
    return cells;
}

std::vector<std::uint16_t> FindBorderDistances(GlassCells const& cells) {
    constexpr int STRAIGHT = 3;
    constexpr int DIAGONAL = 4;
    constexpr int FAR = 60000;
    auto const width = static_cast<std::ptrdiff_t>(cells.width);
    auto const height = static_cast<std::ptrdiff_t>(cells.labels.size()) / width;
    std::vector<std::uint16_t> distances(cells.labels.size(), FAR);
    auto const at = [&](std::ptrdiff_t x, std::ptrdiff_t y) { return static_cast<std::size_t>(y * width + x); };
    for (std::ptrdiff_t y = 0; y < height; ++y)
        for (std::ptrdiff_t x = 0; x < width; ++x) {
            std::uint32_t const own = cells.labels[at(x, y)];
            bool const isBorder = (x + 1 < width && cells.labels[at(x + 1, y)] != own) ||
                                  (y + 1 < height && cells.labels[at(x, y + 1)] != own);
            if (isBorder) distances[at(x, y)] = 0;
        }
    auto const visit = [&](std::ptrdiff_t x, std::ptrdiff_t y, std::ptrdiff_t step) {
        int best = distances[at(x, y)];
        auto const look = [&](std::ptrdiff_t u, std::ptrdiff_t v, int length) {
            if (u >= 0 && u < width && v >= 0 && v < height) best = std::min(best, distances[at(u, v)] + length);
        };
        look(x - step, y, STRAIGHT);
        look(x - 1, y - step, DIAGONAL);
        look(x, y - step, STRAIGHT);
        look(x + 1, y - step, DIAGONAL);
        distances[at(x, y)] = static_cast<std::uint16_t>(best);
    };
    for (std::ptrdiff_t y = 0; y < height; ++y)
        for (std::ptrdiff_t x = 0; x < width; ++x) visit(x, y, 1);
    for (std::ptrdiff_t y = height; y-- > 0;)
        for (std::ptrdiff_t x = width; x-- > 0;) visit(x, y, -1);
    return distances;
}

} // namespace Velnor::Proc::Kernels
