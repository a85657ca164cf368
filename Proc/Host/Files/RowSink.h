#pragma once

#include "Proc/Interfaces/Plane.h"

#include <cstdint>
#include <vector>

namespace Velnor::Proc::Files {

/// How samples of a file are stored.
enum class SampleDepth : std::uint8_t { Bits8, Bits16 };

/// The nearest 8-bit value, halves upwards: 65535 is 255.
constexpr unsigned char To8Bits(std::uint16_t value) {
    return static_cast<unsigned char>((value * 255U + 32767U) / 65535U);
}

/// Puts the rows of a file where they belong in an upright picture, whatever the file's orientation: turning costs no
/// second picture.
class RowSink {
public:
    /// @param picture      the upright picture, packed, one plane
    /// @param sampleDepth  of the rows that will be put
    /// @param orientation  1 to 8, as EXIF 2.3 numbers them (tag 0x0112); others count as 1
    RowSink(MutablePlane const& picture, SampleDepth sampleDepth, int orientation);

    static bool SwapsSides(int orientation) { return orientation >= 5 && orientation <= 8; }

    /// Puts a row of the file, as it is stored; the picture's samples per pixel.
    void Put(std::uint64_t row, void const* samples);

private:
    void Scatter(unsigned char const* pixels, unsigned char* first) const;

    MutablePlane const plane;
    SampleDepth const depth;
    std::uint64_t pixelsInRow;
    unsigned char* origin;             ///< Where the file's first pixel goes.
    std::int64_t stepX;                ///< Bytes from there to the next pixel of the row,
    std::int64_t stepY;                ///< and to the first pixel of the next row.
    std::vector<unsigned char> buffer; ///< A row at 8 bits.
};

} // namespace Velnor::Proc::Files
