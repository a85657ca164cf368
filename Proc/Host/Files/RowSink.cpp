#include "Proc/Host/Files/RowSink.h"

#include <algorithm>

namespace Velnor::Proc::Files {
namespace {

/// How an orientation maps the file's axes: each may run backwards in the picture, and the two may be swapped.
struct Turn {
    bool isSwapped;
    bool flipX; ///< The picture's x runs against the file's x (its y when swapped).
    bool flipY;
};

Turn GetTurn(int orientation) {
    switch (orientation) {
    case 2:
        return {false, true, false};
    case 3:
        return {false, true, true};
    case 4:
        return {false, false, true};
    case 5:
        return {true, false, false};
    case 6:
        return {true, true, false};
    case 7:
        return {true, true, true};
    case 8:
        return {true, false, true};
    default:
        return {false, false, false};
    }
}

template <std::size_t Bytes>
void ScatterPixels(unsigned char const* pixels, std::uint64_t count, unsigned char* target, std::int64_t step) {
    for (std::uint64_t i = 0; i < count; ++i, pixels += Bytes, target += step) std::copy_n(pixels, Bytes, target);
}

} // namespace

RowSink::RowSink(MutablePlane const& picture, SampleDepth sampleDepth, int orientation)
    : plane(picture), depth(sampleDepth) {
    Turn const turn = GetTurn(orientation);
    auto const pixel = static_cast<std::int64_t>(plane.GetSampleBytes());
    std::uint64_t const width = plane.GetWidth() / plane.GetSampleBytes();
    std::int64_t const across = turn.flipX ? -pixel : pixel;
    std::int64_t const down = turn.flipY ? -plane.GetStride() : plane.GetStride();
    origin = plane.GetOffsetPtr(turn.flipX ? width - 1 : 0, turn.flipY ? plane.GetHeight() - 1 : 0);
    stepX = turn.isSwapped ? down : across;
    stepY = turn.isSwapped ? across : down;
    pixelsInRow = turn.isSwapped ? plane.GetHeight() : width;
    if (depth == SampleDepth::Bits16) buffer.resize(pixelsInRow * plane.GetSampleBytes());
}

void RowSink::Put(std::uint64_t row, void const* samples) {
    unsigned char* const first = origin + static_cast<std::int64_t>(row) * stepY;
    if (depth == SampleDepth::Bits8) return Scatter(static_cast<unsigned char const*>(samples), first);
    auto const* const deep = static_cast<std::uint16_t const*>(samples);
    std::transform(deep, deep + buffer.size(), buffer.begin(), To8Bits);
    Scatter(buffer.data(), first);
}

void RowSink::Scatter(unsigned char const* pixels, unsigned char* first) const {
    std::uint64_t const bytes = plane.GetSampleBytes();
    if (stepX == static_cast<std::int64_t>(bytes)) {
        std::copy_n(pixels, pixelsInRow * bytes, first);
        return;
    }
    switch (bytes) {
    case 1:
        return ScatterPixels<1>(pixels, pixelsInRow, first, stepX);
    case 2:
        return ScatterPixels<2>(pixels, pixelsInRow, first, stepX);
    case 3:
        return ScatterPixels<3>(pixels, pixelsInRow, first, stepX);
    default:
        return ScatterPixels<4>(pixels, pixelsInRow, first, stepX);
    }
}

} // namespace Velnor::Proc::Files
