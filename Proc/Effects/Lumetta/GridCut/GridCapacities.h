#pragma once

#include "Core/PixFmt.h"
#include "Proc/Effects/Lumetta/GridCut/ZeroBlock.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace Velnor::Proc::Kernels {

/// Where the bytes that are compared lie in a pixel.
struct ColourBytes {
    unsigned pixelBytes = 1;
    unsigned first = 0;
    unsigned count = 1; ///< 1 or 3.

    /// Of an interleaved format, or nothing for a format that must be converted to grey first.
    static std::optional<ColourBytes> Find(PixFmt format);
};

/// Capacity of the link between two neighbours by the squared difference of their colours: 1 + 1024 exp(-d / (16 n)),
/// where n is 9 for three colour bytes and 1 for one. Numbers from 1 to 1025.
class SimilarityTable {
public:
    explicit SimilarityTable(unsigned colourBytes);

    std::int16_t operator[](unsigned squaredDifference) const {
        return entries[squaredDifference < LAST ? squaredDifference : LAST];
    }

private:
    static constexpr unsigned LAST = 1023; ///< From here on the capacity is 1.
    std::array<std::int16_t, LAST + 1> entries{};
};

/// The six capacities of each pixel, index y * width + x.
class GridCapacities {
public:
    static constexpr std::int16_t STROKE = 1024; ///< Of the link between a marked pixel and its terminal.

    /// All zero. Throws std::bad_alloc.
    GridCapacities(std::uint32_t pixelsAcross, std::uint32_t pixelsDown);

    /// Links the marked pixels of a row to their terminals. A value that is both marks foreground.
    void MarkRow(std::uint32_t y, std::uint8_t const* strokes, std::uint8_t foreground, std::uint8_t background);

    /// Links the pixels of a row to each other, and to those of the row below unless it is null.
    void LinkRow(std::uint32_t y, std::uint8_t const* pixels, std::uint8_t const* below, ColourBytes const& bytes,
                 SimilarityTable const& table);

    std::span<std::int16_t const> GetSource() const { return {source, pixelsCount}; }
    std::span<std::int16_t const> GetSink() const { return {sink, pixelsCount}; }
    std::span<std::int16_t const> GetLeft() const { return {left, pixelsCount}; }
    std::span<std::int16_t const> GetRight() const { return {right, pixelsCount}; }
    std::span<std::int16_t const> GetUp() const { return {up, pixelsCount}; }
    std::span<std::int16_t const> GetDown() const { return {down, pixelsCount}; }

private:
    std::size_t width;
    std::size_t pixelsCount;
    ZeroBlock block;
    std::int16_t* source;
    std::int16_t* sink;
    std::int16_t* left;
    std::int16_t* right;
    std::int16_t* up;
    std::int16_t* down;
};

} // namespace Velnor::Proc::Kernels
