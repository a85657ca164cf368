#include "Proc/Effects/Lumetta/Kernels/PencilRows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace Velnor::Proc::Kernels {
namespace {

/// A number from 0 to 1 without pattern for each lattice point (the finaliser of MurmurHash3, A. Appleby).
float Noise(std::uint32_t x, std::uint32_t y) {
    std::uint32_t hash = x * 0x9e3779b1U ^ y * 0x85ebca77U;
    hash = (hash ^ hash >> 16) * 0x85ebca6bU;
    hash = (hash ^ hash >> 13) * 0xc2b2ae35U;
    hash ^= hash >> 16;
    return static_cast<float>(hash >> 8) / static_cast<float>(1 << 24);
}

/// One direction of hatching, for luma below `below`.
struct Hatch {
    float directionX;
    float directionY;
    float below;
};
constexpr std::array<Hatch, 3> HATCHES{
    {{0.7071F, 0.7071F, 0.62F}, {0.7071F, -0.7071F, 0.42F}, {0.2588F, 0.9659F, 0.25F}}};

/// How much of a pixel the lines of a hatch cover: thin between, soft at their sides, waving a little.
float LineAt(float position) {
    float const phase = position - std::floor(position);
    return std::max(0.0F, 1 - std::abs(phase - 0.5F) * 4);
}

} // namespace

void DrawPencil(ConstPlane const& blurred, MutablePlane const& luma, Pencil const& pencil) {
    std::array<float, 256> press{}; // What is left of white under the pencil.
    for (std::size_t i = 0; i < press.size(); ++i)
        press[i] = static_cast<float>(std::pow(static_cast<double>(i) / 255, 1 + 3 * pencil.darkness));
    auto const scale = static_cast<float>(1 / std::max(pencil.spacing, 2.0));
    auto const hatching = static_cast<float>(pencil.hatching);
    auto const paper = static_cast<float>(pencil.paper) * 0.12F;
    auto const strength = static_cast<float>(pencil.strength);
    for (std::uint64_t y = 0; y < luma.GetHeight(); ++y) {
        unsigned char const* const tone = blurred.GetRow(y);
        unsigned char* const to = luma.GetRow(y);
        auto const v = static_cast<std::uint32_t>(y);
        for (std::uint64_t x = 0; x < luma.GetWidth(); ++x) {
            auto const u = static_cast<std::uint32_t>(x);
            int const dodged = std::min(255, (255 * to[x] + tone[x] / 2) / std::max<int>(tone[x], 1));
            float white = press[static_cast<std::size_t>(dodged)];
            float const grain = 0.5F * Noise(u, v) + 0.5F * Noise(u / 3, v / 3);
            float const shade = static_cast<float>(tone[x]) / 255;
            for (Hatch const& hatch : HATCHES) {
                if (shade >= hatch.below) break;
                float const across =
                    (static_cast<float>(x) * hatch.directionX + static_cast<float>(y) * hatch.directionY);
                float const ink = (hatch.below - shade) / hatch.below * (0.6F + 0.8F * grain);
                white *= 1 - std::min(1.0F, hatching * ink * LineAt(across * scale + 0.3F * grain));
            }
            white -= paper * grain * (0.4F + 0.6F * white);
            float const drawn = 255 * std::clamp(white, 0.0F, 1.0F);
            to[x] = static_cast<unsigned char>(static_cast<float>(to[x]) +
                                               strength * (drawn - static_cast<float>(to[x])) + 0.5F);
        }
    }
}

} // namespace Velnor::Proc::Kernels
