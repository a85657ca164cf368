#pragma once

#include <cstdint>
#include <string>

namespace Velnor::Proc {

constexpr std::uint32_t LARGEST_PICTURE_SIDE = 1U << 20; ///< Pixels.

/// "640 x 480".
template <class Integer>
std::string SizeText(Integer width, Integer height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

/// Geometry of a frame. Two frames are alike only when all four words are.
struct FrameFormat {
    std::uint32_t width = 0;           ///< Pixels.
    std::uint32_t height = 0;          ///< Pixels.
    std::uint32_t aspectNumerator = 0; ///< Width of a pixel against its height: 1 over 1 is square.
    std::uint32_t aspectDenominator = 0;

    friend bool operator==(FrameFormat const&, FrameFormat const&) = default;

    static constexpr FrameFormat Square(std::uint32_t width, std::uint32_t height) { return {width, height, 1, 1}; }
};

inline std::string SizeText(FrameFormat const& frame) { return SizeText(frame.width, frame.height); }

constexpr bool IsSameSize(FrameFormat const& a, FrameFormat const& b) {
    return a.width == b.width && a.height == b.height;
}

/// A rectangle of a picture, in pixels.
struct Rectangle {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;

    friend bool operator==(Rectangle const&, Rectangle const&) = default;
};

/// Margins of a picture, in pixels: how much is cut from (or added to) each side.
class CropInfo {
public:
    constexpr CropInfo() = default;
    constexpr CropInfo(unsigned int leftMargin, unsigned int topMargin, unsigned int rightMargin,
                       unsigned int bottomMargin)
        : left(leftMargin), top(topMargin), right(rightMargin), bottom(bottomMargin) {}

    unsigned int GetLeft() const { return left; }
    unsigned int GetTop() const { return top; }
    unsigned int GetRight() const { return right; }
    unsigned int GetBottom() const { return bottom; }

    /// Makes each margin a multiple: left and right of `horizontal`, top and bottom of `vertical`, rounding up, so that
    /// the margins fall on the chroma grid of a subsampled format. A step of 0 or 1 changes nothing. Returns *this.
    CropInfo const& Apart(unsigned int horizontal, unsigned int vertical) {
        auto const roundUp = [](unsigned int& margin, unsigned int step) {
            if (step > 1) margin = (margin + step - 1) / step * step;
        };
        roundUp(left, horizontal);
        roundUp(right, horizontal);
        roundUp(top, vertical);
        roundUp(bottom, vertical);
        return *this;
    }

    friend bool operator==(CropInfo const&, CropInfo const&) = default;

private:
    unsigned int left = 0;
    unsigned int top = 0;
    unsigned int right = 0;
    unsigned int bottom = 0;
};

} // namespace Velnor::Proc
