#include "Proc/Effects/Lumetta/Kernels/Color/ColorCube.h"

#include <algorithm>
#include <cmath>

namespace Velnor::Proc::Kernels {

ColorCube::ColorCube(unsigned int stepShift, Map const& colorMap)
    : map(colorMap), shift(stepShift), side((256U >> stepShift) + 1), nodes(std::size_t{side} * side * side) {}

void ColorCube::FillNode(std::size_t index) {
    // Grid points may lie beyond 0 to 255, so that what is read between them is right up to the ends.
    static constexpr float LEAST = -100.0F;
    static constexpr float MOST = 400.0F;
    auto const level = [&](std::size_t step) { return static_cast<float>(step << shift); };
    auto const fixed = [](float value) {
        return static_cast<std::int16_t>(std::lround(std::clamp(value, LEAST, MOST) * (1 << SCALE_BITS)));
    };
    Node& node = nodes[index];
    if (node.isFilled) return;
    RgbLevels const result =
        map({level(index / (std::size_t{side} * side)), level(index / side % side), level(index % side)});
    node.red = fixed(result[0]);
    node.green = fixed(result[1]);
    node.blue = fixed(result[2]);
    node.isFilled = true;
}

void ColorCube::FillCell(std::size_t corner) {
    for (std::size_t const red : {std::size_t{0}, std::size_t{side} * side})
        for (std::size_t const green : {std::size_t{0}, std::size_t{side}})
            for (std::size_t const blue : {0U, 1U}) FillNode(corner + red + green + blue);
    nodes[corner].isCellFilled = true;
}

template <unsigned int Shift, unsigned int PixelBytes, bool IsBlueFirst>
void ColorCube::ApplyRows(MutablePlane const& plane) {
    constexpr std::uint32_t SIDE = (256U >> Shift) + 1;
    constexpr std::uint32_t MASK = (1U << Shift) - 1;
    constexpr int ROUND = 1 << (Shift + SCALE_BITS - 1);
    constexpr std::size_t RED = IsBlueFirst ? 2 : 0;
    // How far inside its cell a colour is, above the way to the cell's next node on that axis: sorted as one number.
    auto const key = [](std::uint32_t level, std::uint32_t stride) { return ((level & MASK) << 24) | stride; };
    auto const way = [](std::uint32_t k) { return k & 0xffffffU; };
    Node const* const base = nodes.data();
    std::uint64_t const pixels = plane.GetWidth() / PixelBytes;
    for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) {
        unsigned char* pixel = plane.GetRow(y);
        for (std::uint64_t x = 0; x < pixels; ++x, pixel += PixelBytes) {
            std::uint32_t const red = pixel[RED];
            std::uint32_t const green = pixel[1];
            std::uint32_t const blue = pixel[2 - RED];
            std::uint32_t const a = key(red, SIDE * SIDE);
            std::uint32_t const b = key(green, SIDE);
            std::uint32_t const c = key(blue, 1);
            std::uint32_t const first = std::max(std::max(a, b), c);
            std::uint32_t const last = std::min(std::min(a, b), c);
            std::uint32_t const middle = a ^ b ^ c ^ first ^ last;
            Node const* const n0 = base + ((red >> Shift) * SIDE + (green >> Shift)) * SIDE + (blue >> Shift);
            if (!n0->isCellFilled) FillCell(static_cast<std::size_t>(n0 - base));
            Node const* const n1 = n0 + way(first);
            Node const* const n2 = n1 + way(middle);
            Node const* const n3 = n2 + way(last);
            int const w0 = static_cast<int>((1U << Shift) - (first >> 24));
            int const w1 = static_cast<int>((first >> 24) - (middle >> 24));
            int const w2 = static_cast<int>((middle >> 24) - (last >> 24));
            int const w3 = static_cast<int>(last >> 24);
            auto const mix = [&](std::int16_t Node::*part) {
                int const sum = w0 * (n0->*part) + w1 * (n1->*part) + w2 * (n2->*part) + w3 * (n3->*part);
                return static_cast<unsigned char>(std::clamp((sum + ROUND) >> (Shift + SCALE_BITS), 0, 255));
            };
            pixel[RED] = mix(&Node::red);
            pixel[1] = mix(&Node::green);
            pixel[2 - RED] = mix(&Node::blue);
        }
    }
}

template <unsigned int Shift>
void ColorCube::ApplyBySize(MutablePlane const& plane, PackedRgb const& format) {
    if (format.pixelBytes == 3)
        format.isBlueFirst ? ApplyRows<Shift, 3, true>(plane) : ApplyRows<Shift, 3, false>(plane);
    else
        format.isBlueFirst ? ApplyRows<Shift, 4, true>(plane) : ApplyRows<Shift, 4, false>(plane);
}

void ColorCube::Apply(MutablePlane const& plane, PackedRgb const& format) {
    shift == 2 ? ApplyBySize<2>(plane, format) : ApplyBySize<3>(plane, format);
}

} // namespace Velnor::Proc::Kernels
