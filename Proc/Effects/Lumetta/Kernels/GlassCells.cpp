#include "Proc/Effects/Lumetta/Kernels/GlassCells.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace Velnor::Proc::Kernels {
namespace {

constexpr int ITERATIONS = 5;

struct Center {
    float x = 0;
    float y = 0;
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
    ConstPlane picture;
    std::size_t pixelBytes;
    int width;
    int height;
    float side;
    float colourWeight;
    std::vector<Center> centers;
    std::vector<std::uint32_t> labels;
    std::vector<float> distances;
};

/// Centres on a grid, each moved at random within the middle of its square; labels by the squares.
void PlaceCenters(Search& search, std::uint32_t seed) {
    std::minstd_rand random(seed == 0 ? 1 : seed); // Of the standard, so the same everywhere.
    int const columns = std::max(1, static_cast<int>(static_cast<float>(search.width) / search.side + 0.5F));
    int const rows = std::max(1, static_cast<int>(static_cast<float>(search.height) / search.side + 0.5F));
    auto const jitter = [&] { return static_cast<float>(random() % 1000) / 1000 * 0.7F - 0.35F; };
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) {
            Center center;
            float const u = static_cast<float>(column) + 0.5F + jitter();
            float const v = static_cast<float>(row) + 0.5F + jitter();
            center.x = u * static_cast<float>(search.width) / static_cast<float>(columns) - 0.5F;
            center.y = v * static_cast<float>(search.height) / static_cast<float>(rows) - 0.5F;
            auto const at = [](float value, int count) {
                return std::clamp(static_cast<int>(value + 0.5F), 0, count - 1);
            };
            unsigned char const* const pixel =
                search.picture.GetRow(static_cast<std::uint64_t>(at(center.y, search.height))) +
                static_cast<std::size_t>(at(center.x, search.width)) * search.pixelBytes;
            for (std::size_t k = 0; k < 3; ++k) center.colour[k] = pixel[k];
            search.centers.push_back(center);
        }
    for (int y = 0; y < search.height; ++y)
        for (int x = 0; x < search.width; ++x)
            search.labels.push_back(
                static_cast<std::uint32_t>(y * rows / search.height * columns + x * columns / search.width));
}

/// Gives each pixel near a centre to it when it is nearer to it than to the one it has.
void Claim(Search& search, std::uint32_t label) {
    Center const& center = search.centers[label];
    float const reach = 1.5F * search.side + 1;
    auto const from = [&](float at) { return std::max(0, static_cast<int>(at - reach)); };
    auto const to = [&](float at, int count) { return std::min(count - 1, static_cast<int>(at + reach) + 1); };
    int const left = from(center.x);
    int const right = to(center.x, search.width);
    for (int y = from(center.y); y <= to(center.y, search.height); ++y) {
        unsigned char const* const row = search.picture.GetRow(static_cast<std::uint64_t>(y));
        auto const start = static_cast<std::size_t>(y) * static_cast<std::size_t>(search.width);
        float const dy = static_cast<float>(y) - center.y;
        for (int x = left; x <= right; ++x) {
            unsigned char const* const pixel = row + static_cast<std::size_t>(x) * search.pixelBytes;
            float const dx = static_cast<float>(x) - center.x;
            float colour = 0;
            for (std::size_t k = 0; k < 3; ++k) {
                float const d = static_cast<float>(pixel[k]) - center.colour[k];
                colour += d * d;
            }
            float const distance = dx * dx + dy * dy + search.colourWeight * colour;
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
    for (int y = 0; y < search.height; ++y) {
        unsigned char const* pixel = search.picture.GetRow(static_cast<std::uint64_t>(y));
        for (int x = 0; x < search.width; ++x, pixel += search.pixelBytes) {
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

} // namespace

GlassCells FindCells(ConstPlane const& picture, unsigned int pixelBytes, CellShape const& shape) {
    Search search;
    search.picture = picture;
    search.pixelBytes = pixelBytes;
    search.width = static_cast<int>(picture.GetWidth() / pixelBytes);
    search.height = static_cast<int>(picture.GetHeight());
    search.side = static_cast<float>(std::max(shape.side, 2.0));
    // At full awareness a difference of 20 levels weighs as much as half a side.
    float const perLevel = static_cast<float>(shape.edgeAwareness) * search.side / 2 / 20;
    search.colourWeight = perLevel * perLevel;
    PlaceCenters(search, shape.seed);
    for (int i = 0; i < ITERATIONS; ++i) {
        search.distances.assign(search.labels.size(), std::numeric_limits<float>::max());
        for (std::uint32_t label = 0; label < search.centers.size(); ++label) Claim(search, label);
        MoveCenters(search);
    }
    GlassCells cells;
    cells.width = static_cast<std::uint32_t>(search.width);
    for (Center const& center : search.centers) {
        auto const byte = [&](std::size_t k) { return static_cast<unsigned char>(center.colour[k] + 0.5F); };
        cells.colours.push_back({byte(0), byte(1), byte(2)});
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
