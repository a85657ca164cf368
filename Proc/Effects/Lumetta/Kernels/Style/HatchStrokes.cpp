#include "Proc/Effects/Lumetta/Kernels/Style/HatchStrokes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace Velnor::Proc::Kernels {
namespace {

/// Strokes of one direction, on tones darker than a limit. Layers cross at narrow angles: right ones make a mesh.
struct Layer {
    float angle; ///< Degrees from the x axis, downwards.
    float below;
};
constexpr std::array<Layer, 3> LAYERS{{{-52, 0.62F}, {-24, 0.42F}, {-80, 0.25F}}};

constexpr float LENGTH = 11;       ///< Of a stroke, in spacings.
constexpr float BREADTH = 0.3F;    ///< Half of a stroke's, in spacings.
constexpr float DRIFT_CELLS = 30;  ///< Spacings over which the hand's direction wanders.
constexpr float DRIFT_DEGREES = 9; ///< By how much it does.
constexpr float SHAKE_DEGREES = 5; ///< By how much neighbouring strokes differ at the most.

/// Noise that changes slowly: lattice points a unit apart, cubic between.
float SmoothNoise(float x, float y, std::uint32_t salt) {
    float const left = std::floor(x);
    float const top = std::floor(y);
    auto const ease = [](float t) { return t * t * (3 - 2 * t); };
    float const u = ease(x - left);
    float const v = ease(y - top);
    auto const at = [&](int dx, int dy) {
        return LatticeNoise(static_cast<std::uint32_t>(static_cast<int>(left) + dx) + salt * 977U,
                            static_cast<std::uint32_t>(static_cast<int>(top) + dy));
    };
    return std::lerp(std::lerp(at(0, 0), at(1, 0), u), std::lerp(at(0, 1), at(1, 1), u), v);
}

struct Stroke {
    float x, y;   ///< Middle, pixels.
    float dx, dy; ///< Direction, of length 1.
    float half;   ///< Of the length, pixels.
    float bend;   ///< Of the ends against the middle, pixels.
    float pressure;
    float below; ///< It presses where the tone is darker.
};

/// Numbers from 0 to 1 that belong to a lattice point; seven of them are its own.
struct Random {
    std::uint32_t x, y;
    float operator()() { return LatticeNoise(x++, y); }
};

float ToRadians(float degrees) { return degrees * std::numbers::pi_v<float> / 180; }

class Hatching {
public:
    Hatching(ConstPlane const& levels, double distance)
        : tone(levels),
          width(static_cast<int>(levels.GetWidth())),
          height(static_cast<int>(levels.GetHeight())),
          spacing(static_cast<float>(std::max(distance, 2.0))),
          breadth(std::max(spacing * BREADTH, 0.7F)),
          paper(levels.GetWidth() * levels.GetHeight(), 255) {}

    /// Strokes on a lattice along the layer's direction, every row of it shifted, every stroke moved.
    void Draw(Layer const& layer, std::uint32_t salt) {
        float const dx = std::cos(ToRadians(layer.angle));
        float const dy = std::sin(ToRadians(layer.angle));
        float const step = spacing * LENGTH * 0.8F;
        float const reach = std::hypot(static_cast<float>(width), static_cast<float>(height)) / 2;
        int const rows = static_cast<int>(reach / spacing) + 2;
        int const columns = static_cast<int>(reach / step) + 2;
        for (int row = -rows; row <= rows; ++row) {
            float const shift = LatticeNoise(static_cast<std::uint32_t>(row), 7919U + salt);
            for (int column = -columns; column <= columns; ++column) {
                Random random{static_cast<std::uint32_t>(row) * 8, static_cast<std::uint32_t>(column) * 4 + salt};
                float const along = (static_cast<float>(column) + shift + 0.5F * (random() - 0.5F)) * step;
                float const across = (static_cast<float>(row) + 0.9F * (random() - 0.5F)) * spacing;
                float const x = static_cast<float>(width) / 2 + along * dx - across * dy;
                float const y = static_cast<float>(height) / 2 + along * dy + across * dx;
                if (IsNear(x, y)) DrawStroke(MakeStroke(layer, x, y, salt, random));
            }
        }
    }

    std::vector<unsigned char> Take() { return std::move(paper); }

private:
    bool IsNear(float x, float y) const {
        float const margin = spacing * LENGTH;
        return x > -margin && y > -margin && x < static_cast<float>(width) + margin &&
               y < static_cast<float>(height) + margin;
    }

    Stroke MakeStroke(Layer const& layer, float x, float y, std::uint32_t salt, Random& random) const {
        float const wander = SmoothNoise(x / (DRIFT_CELLS * spacing), y / (DRIFT_CELLS * spacing), salt);
        float const degrees = layer.angle + DRIFT_DEGREES * (2 * wander - 1) + SHAKE_DEGREES * (2 * random() - 1);
        Stroke stroke{};
        stroke.x = x;
        stroke.y = y;
        stroke.dx = std::cos(ToRadians(degrees));
        stroke.dy = std::sin(ToRadians(degrees));
        stroke.half = spacing * LENGTH / 2 * (0.6F + 0.8F * random());
        stroke.bend = spacing * (random() - 0.5F);
        stroke.pressure = 0.55F + 0.45F * random();
        stroke.below = layer.below * (0.85F + 0.3F * random());
        return stroke;
    }

    /// A stroke presses as the tone under its line asks, so it ends where the picture grows light; its ends taper.
    void DrawStroke(Stroke const& stroke) {
        bool const isFlat = std::abs(stroke.dx) > std::abs(stroke.dy);
        float const slope = isFlat ? stroke.dy / stroke.dx : stroke.dx / stroke.dy;
        float const middle = isFlat ? stroke.x : stroke.y;
        float const major = stroke.half * std::abs(isFlat ? stroke.dx : stroke.dy);
        // A line's breadth along the minor axis.
        float const half = breadth * std::sqrt(1 + slope * slope);
        int const last = (isFlat ? width : height) - 1;
        int const end = std::min(last, static_cast<int>(std::floor(middle + major)));
        for (int i = std::max(0, static_cast<int>(std::ceil(middle - major))); i <= end; ++i) {
            float const at = (static_cast<float>(i) - middle) / major;
            float const line = (isFlat ? stroke.y : stroke.x) + slope * at * major + stroke.bend * at * at;
            int const nearest = static_cast<int>(std::lround(line));
            if (nearest < 0 || nearest >= (isFlat ? height : width)) continue;
            float const shade = static_cast<float>(isFlat ? tone.GetRow(static_cast<std::uint64_t>(nearest))[i]
                                                          : tone.GetRow(static_cast<std::uint64_t>(i))[nearest]) /
                                255;
            if (shade >= stroke.below) continue;
            float const taper = std::min(1.0F, 3 * (1 - std::abs(at)));
            float const ink = stroke.pressure * taper * std::min(1.0F, 1.6F * (stroke.below - shade) / stroke.below);
            PressAcross(isFlat, i, line, half * (0.6F + 0.4F * taper), ink);
        }
    }

    void PressAcross(bool isFlat, int i, float line, float half, float ink) {
        int const last = (isFlat ? height : width) - 1;
        int const to = std::min(last, static_cast<int>(line + half + 0.5F));
        for (int j = std::max(0, static_cast<int>(std::ceil(line - half - 0.5F))); j <= to; ++j) {
            float const cover = std::clamp(half + 0.5F - std::abs(static_cast<float>(j) - line), 0.0F, 1.0F);
            auto const at = static_cast<std::size_t>(isFlat ? j : i) * static_cast<std::size_t>(width) +
                            static_cast<std::size_t>(isFlat ? i : j);
            paper[at] = static_cast<unsigned char>(static_cast<float>(paper[at]) * (1 - ink * cover) + 0.5F);
        }
    }

    ConstPlane tone;
    int width, height;
    float spacing;
    float breadth; ///< Half of a stroke's, pixels.
    std::vector<unsigned char> paper;
};

} // namespace

float LatticeNoise(std::uint32_t x, std::uint32_t y) {
    std::uint32_t hash = x * 0x9e3779b1U ^ y * 0x85ebca77U;
    hash = (hash ^ hash >> 16) * 0x85ebca6bU;
    hash = (hash ^ hash >> 13) * 0xc2b2ae35U;
    hash ^= hash >> 16;
    return static_cast<float>(hash >> 8) / static_cast<float>(1 << 24);
}

std::vector<unsigned char> DrawHatching(ConstPlane const& tone, double spacing) {
    Hatching hatching(tone, spacing);
    for (std::uint32_t i = 0; i < LAYERS.size(); ++i) hatching.Draw(LAYERS[i], (i + 1) * 104729U);
    return hatching.Take();
}

} // namespace Velnor::Proc::Kernels
