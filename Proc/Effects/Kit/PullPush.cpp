#include "Proc/Effects/Kit/PullPush.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace Velnor::Proc::Kernels {
namespace {

/// Colour times weight, and the weight, from 0 to 1.
struct Cell {
    std::array<float, 3> colour{};
    float weight = 0;
};

struct Level {
    Level(std::size_t w, std::size_t h) : width(w), height(h), cells(w * h) {}
    std::size_t width;
    std::size_t height;
    std::vector<Cell> cells;

    Cell& At(std::size_t x, std::size_t y) { return cells[y * width + x]; }
    Cell const& At(std::size_t x, std::size_t y) const { return cells[y * width + x]; }
};

/// Bytes of a pixel that are colours.
std::size_t CountColours(std::size_t pixelBytes) { return pixelBytes < 3 ? 1 : 3; }

/// A sum of up to four cells; a weight above 1 says no more than 1.
void Limit(Cell& cell) {
    if (cell.weight <= 1) return;
    for (float& each : cell.colour) each /= cell.weight;
    cell.weight = 1;
}

Level MakeFirst(ConstPlane const& picture, std::size_t pixelBytes, ConstPlane const& weights, ConstPlane const& alpha) {
    Level level((weights.GetWidth() + 1) / 2, (weights.GetHeight() + 1) / 2);
    std::size_t const colours = CountColours(pixelBytes);
    for (std::size_t y = 0; y < weights.GetHeight(); ++y) {
        unsigned char const* const from = picture.GetRow(y);
        unsigned char const* const share = weights.GetRow(y);
        for (std::size_t x = 0; x < weights.GetWidth(); ++x) {
            Cell& cell = level.At(x / 2, y / 2);
            float weight = static_cast<float>(share[x]) / 255;
            if (!alpha.IsEmpty()) weight *= static_cast<float>(*alpha.GetOffsetPtr(x, y)) / 255;
            for (std::size_t k = 0; k < colours; ++k)
                cell.colour[k] += weight * static_cast<float>(from[x * pixelBytes + k]);
            cell.weight += weight;
        }
    }
    std::ranges::for_each(level.cells, Limit);
    return level;
}

Level Pull(Level const& fine) {
    Level coarse((fine.width + 1) / 2, (fine.height + 1) / 2);
    for (std::size_t y = 0; y < fine.height; ++y)
        for (std::size_t x = 0; x < fine.width; ++x) {
            Cell const& from = fine.At(x, y);
            Cell& to = coarse.At(x / 2, y / 2);
            for (std::size_t k = 0; k < 3; ++k) to.colour[k] += from.colour[k];
            to.weight += from.weight;
        }
    std::ranges::for_each(coarse.cells, Limit);
    return coarse;
}

/// The colour of a coarse level at the centre of cell (x, y) of the next finer one: three quarters of the cell around
/// it and a quarter of its neighbour, each way.
std::array<float, 3> Interpolate(Level const& coarse, std::size_t x, std::size_t y) {
    auto const neighbour = [](std::size_t at, std::size_t count) {
        std::size_t const own = at / 2;
        if (at % 2 == 0) return own > 0 ? own - 1 : own;
        return std::min(own + 1, count - 1);
    };
    std::size_t const besideX = neighbour(x, coarse.width);
    std::size_t const besideY = neighbour(y, coarse.height);
    std::array<float, 3> colour{};
    for (std::size_t k = 0; k < 3; ++k) {
        float const own = 0.75F * coarse.At(x / 2, y / 2).colour[k] + 0.25F * coarse.At(besideX, y / 2).colour[k];
        float const other = 0.75F * coarse.At(x / 2, besideY).colour[k] + 0.25F * coarse.At(besideX, besideY).colour[k];
        colour[k] = 0.75F * own + 0.25F * other;
    }
    return colour;
}

void Push(Level const& coarse, Level& fine) {
    for (std::size_t y = 0; y < fine.height; ++y)
        for (std::size_t x = 0; x < fine.width; ++x) {
            Cell& cell = fine.At(x, y);
            if (cell.weight >= 1) continue;
            std::array<float, 3> const around = Interpolate(coarse, x, y);
            for (std::size_t k = 0; k < 3; ++k) cell.colour[k] += (1 - cell.weight) * around[k];
            cell.weight = 1;
        }
}

void Write(Level const& level, MutablePlane const& picture, std::size_t pixelBytes, ConstPlane const& weights) {
    for (std::size_t y = 0; y < weights.GetHeight(); ++y) {
        unsigned char const* const share = weights.GetRow(y);
        unsigned char* const to = picture.GetRow(y);
        for (std::size_t x = 0; x < weights.GetWidth(); ++x) {
            if (share[x] == 255) continue;
            std::array<float, 3> const around = Interpolate(level, x, y);
            float const weight = static_cast<float>(share[x]) / 255;
            for (std::size_t k = 0; k < CountColours(pixelBytes); ++k) {
                unsigned char& byte = to[x * pixelBytes + k];
                float const mixed = weight * static_cast<float>(byte) + (1 - weight) * around[k];
                byte = static_cast<unsigned char>(std::clamp(mixed + 0.5F, 0.0F, 255.0F));
            }
        }
    }
}

} // namespace

void FillHoles(MutablePlane const& picture, unsigned int pixelBytes, ConstPlane const& weights,
               ConstPlane const& alpha) {
    std::vector<Level> levels{MakeFirst(picture, pixelBytes, weights, alpha)};
    while (levels.back().cells.size() > 1) levels.push_back(Pull(levels.back()));
    Cell& top = levels.back().cells.front();
    if (top.weight <= 0) return;
    for (float& each : top.colour) each /= top.weight;
    top.weight = 1;
    for (std::size_t i = levels.size() - 1; i > 0; --i) Push(levels[i], levels[i - 1]);
    Write(levels.front(), picture, pixelBytes, weights);
}

} // namespace Velnor::Proc::Kernels
