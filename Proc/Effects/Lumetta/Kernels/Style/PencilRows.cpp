#include "Proc/Effects/Lumetta/Kernels/Style/PencilRows.h"

#include "Proc/Effects/Lumetta/Kernels/Style/HatchStrokes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace Velnor::Proc::Kernels {
namespace {

constexpr int DODGE_FLOOR = 6; ///< Levels added to both sides of the dodge: the grain of blacks draws no lines.
constexpr float SMUDGE = 0.6F; ///< Graphite rubbed into the darkest tones, of what full hatching puts there.

} // namespace

void DrawPencil(ConstPlane const& blurred, MutablePlane const& luma, Pencil const& pencil) {
    std::array<float, 256> press{}; // What is left of white under the pencil.
    for (std::size_t i = 0; i < press.size(); ++i)
        press[i] = static_cast<float>(std::pow(static_cast<double>(i) / 255, 1 + 3 * pencil.darkness));
    std::vector<unsigned char> const strokes =
        pencil.hatching > 0 ? DrawHatching(blurred, pencil.spacing) : std::vector<unsigned char>{};
    auto const hatching = static_cast<float>(pencil.hatching);
    auto const paper = static_cast<float>(pencil.paper) * 0.12F;
    auto const strength = static_cast<float>(pencil.strength);
    for (std::uint64_t y = 0; y < luma.GetHeight(); ++y) {
        unsigned char const* const tone = blurred.GetRow(y);
        unsigned char* const to = luma.GetRow(y);
        auto const v = static_cast<std::uint32_t>(y);
        for (std::uint64_t x = 0; x < luma.GetWidth(); ++x) {
            auto const u = static_cast<std::uint32_t>(x);
            int const under = tone[x] + DODGE_FLOOR;
            int const dodged = std::min(255, (255 * (to[x] + DODGE_FLOOR) + under / 2) / under);
            float white = press[static_cast<std::size_t>(dodged)];
            float const grain = 0.5F * LatticeNoise(u, v) + 0.5F * LatticeNoise(u / 3, v / 3);
            if (!strokes.empty()) {
                float const dark = 1 - static_cast<float>(tone[x]) / 255;
                float const line = 1 - static_cast<float>(strokes[y * luma.GetWidth() + x]) / 255;
                white *= 1 - std::min(1.0F, hatching * SMUDGE * dark * dark * (0.6F + 0.8F * grain));
                white *= 1 - std::min(1.0F, hatching * line * (0.7F + 0.6F * grain));
            }
            white -= paper * grain * (0.4F + 0.6F * white);
            float const drawn = 255 * std::clamp(white, 0.0F, 1.0F);
            to[x] = static_cast<unsigned char>(static_cast<float>(to[x]) +
                                               strength * (drawn - static_cast<float>(to[x])) + 0.5F);
        }
    }
}

} // namespace Velnor::Proc::Kernels
