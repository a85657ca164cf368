#pragma once

#include "Core/Export.h"

#include <cstdint>
#include <type_traits>

namespace Velnor::Proc {
namespace Details {

/// A view on the samples of one plane, or of a rectangle of it: no ownership. Rows are `width` bytes wide and `stride`
/// bytes apart; the stride is signed and may be larger than the row, and the bytes between two rows belong to somebody
/// else. A view of a picture is valid until the picture's next operation that is not const, or its end.
/// `PlaneTemplate<0>` may be written through, `PlaneTemplate<1>` only read; the first converts to the second.
template <int ReadOnly>
class PlaneTemplate {
public:
    using Byte = std::conditional_t<ReadOnly == 0, unsigned char, unsigned char const>;

    PlaneTemplate() = default;

    /// @param data         first sample of the first row; with `bottomUp`, of the last row
    /// @param rowStride    bytes from a row to the one below it in memory
    /// @param rowBytes     width of a row in bytes
    /// @param rowCount     number of rows
    /// @param bytesASample bytes from one sample (pixel, or chroma group) to its right neighbour; 1 or more
    /// @param bottomUp     the rows are stored last row first, as some picture files are: row 0 is the last in memory
    PlaneTemplate(Byte* firstSample, std::int64_t rowStride, std::uint64_t rowBytes, std::uint64_t rowCount,
                  std::uint64_t bytesASample = 1, bool bottomUp = false)
        : data(firstSample), stride(rowStride), width(rowBytes), height(rowCount), sampleBytes(bytesASample) {
        if (bottomUp && rowCount > 0) {
            data += rowStride * static_cast<std::int64_t>(rowCount - 1);
            stride = -rowStride;
        }
    }

    template <int Other>
    requires(ReadOnly == 1 && Other == 0)
        PlaneTemplate(PlaneTemplate<Other> const& mutablePlane) // NOLINT(google-explicit-constructor): reading is less
        : PlaneTemplate(mutablePlane.GetData(), mutablePlane.GetStride(), mutablePlane.GetWidth(),
                        mutablePlane.GetHeight(), mutablePlane.GetSampleBytes()) {}

    Byte* GetData() const { return data; }
    std::int64_t GetStride() const { return stride; }  ///< Bytes; negative in a bottom-up picture.
    std::uint64_t GetWidth() const { return width; }   ///< Bytes of a row.
    std::uint64_t GetHeight() const { return height; } ///< Rows.
    std::uint64_t GetSampleBytes() const { return sampleBytes; }
    bool IsEmpty() const { return width == 0 || height == 0; }

    Byte* GetRow(std::uint64_t y) const { return data + static_cast<std::int64_t>(y) * stride; }

    /// Address of sample x of row y.
    Byte* GetOffsetPtr(std::uint64_t x, std::uint64_t y) const { return GetRow(y) + x * sampleBytes; }

    /// The part of this plane under a rectangle of the picture.
    /// @param x, y, rectWidth, rectHeight  in pixels of the picture; x and y on a whole sample of this plane
    /// @param bytesASample                 bytes of one sample of this plane
    /// @param shiftX, shiftY               pixels of the picture per sample, as powers of two
    PlaneTemplate MakeSubplane(unsigned int x, unsigned int y, unsigned int rectWidth, unsigned int rectHeight,
                               unsigned char bytesASample, unsigned char shiftX, unsigned char shiftY) const {
        auto const groups = [](std::uint64_t pixels, unsigned char shift) {
            return (pixels + (1U << shift) - 1) >> shift;
        };
        std::int64_t const down = static_cast<std::int64_t>(y >> shiftY) * stride;
        std::int64_t const right = static_cast<std::int64_t>(x >> shiftX) * bytesASample;
        return {data + down + right, stride, groups(rectWidth, shiftX) * bytesASample, groups(rectHeight, shiftY),
                bytesASample};
    }

private:
    Byte* data = nullptr;
    std::int64_t stride = 0;
    std::uint64_t width = 0;
    std::uint64_t height = 0;
    std::uint64_t sampleBytes = 1;
};

} // namespace Details

using MutablePlane = Details::PlaneTemplate<0>;
using ConstPlane = Details::PlaneTemplate<1>;

/// Copies the samples of one plane to another of the same row width and number of rows; the bytes between rows stay.
/// The planes may be the same but must not overlap otherwise. Throws ProcException when the sizes differ.
VELNOR_API void CopyPlane(Details::PlaneTemplate<1> const& source, Details::PlaneTemplate<0> const& target);

} // namespace Velnor::Proc
