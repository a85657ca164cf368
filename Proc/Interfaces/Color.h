#pragma once

#include "Core/Export.h"

#include <array>
#include <cstdint>

namespace Velnor::Proc {

/// A colour of four 8-bit components, kept in the order blue, green, red, opacity (255 is opaque). Effects that pair
/// "component k" of a colour with byte k of a pixel rely on this order, which is that of BGR24 and BGRA.
class VELNOR_API Color {
public:
    enum class Opacity : unsigned char { Transparent = 0, Opaque = 255 };

    constexpr Color() = default; ///< Opaque black.
    constexpr Color(unsigned char blue, unsigned char green, unsigned char red, unsigned char opacity)
        : components{blue, green, red, opacity} {}

    /// From a packed word whose first-named component is in the lowest byte.
    static constexpr Color FromRGBA(unsigned int word) {
        return {Byte(word, 2), Byte(word, 1), Byte(word, 0), Byte(word, 3)};
    }
    static constexpr Color FromBGRA(unsigned int word) {
        return {Byte(word, 0), Byte(word, 1), Byte(word, 2), Byte(word, 3)};
    }
    static constexpr Color FromARGB(unsigned int word) {
        return {Byte(word, 3), Byte(word, 2), Byte(word, 1), Byte(word, 0)};
    }
    static constexpr Color FromABGR(unsigned int word) {
        return {Byte(word, 1), Byte(word, 2), Byte(word, 3), Byte(word, 0)};
    }

    /// To a packed word, the first-named component in the lowest byte.
    constexpr unsigned int rgba() const { return Pack(GetRed(), GetGreen(), GetBlue(), GetOpacity()); }
    constexpr unsigned int bgra() const { return Pack(GetBlue(), GetGreen(), GetRed(), GetOpacity()); }
    constexpr unsigned int argb() const { return Pack(GetOpacity(), GetRed(), GetGreen(), GetBlue()); }
    constexpr unsigned int abgr() const { return Pack(GetOpacity(), GetBlue(), GetGreen(), GetRed()); }

    constexpr unsigned char GetBlue() const { return components[0]; }
    constexpr unsigned char GetGreen() const { return components[1]; }
    constexpr unsigned char GetRed() const { return components[2]; }
    constexpr unsigned char GetOpacity() const { return components[3]; }

    /// Component by position, 0 to 3.
    constexpr unsigned char operator[](unsigned int index) const { return components[index]; }

    /// Luma and chroma, full range BT.601 (JFIF), rounded to the nearest level.
    unsigned char y() const;
    unsigned char u() const;
    unsigned char v() const;

    static constexpr Color Black(Opacity opacity) { return {0, 0, 0, static_cast<unsigned char>(opacity)}; }
    static constexpr Color White(Opacity opacity) { return {255, 255, 255, static_cast<unsigned char>(opacity)}; }

    friend constexpr bool operator==(Color const&, Color const&) = default;

private:
    static constexpr unsigned char Byte(unsigned int word, unsigned int index) {
        return static_cast<unsigned char>(word >> (8 * index));
    }
    static constexpr unsigned int Pack(unsigned char first, unsigned char second, unsigned char third,
                                       unsigned char fourth) {
        return first | (static_cast<unsigned int>(second) << 8) | (static_cast<unsigned int>(third) << 16) |
               (static_cast<unsigned int>(fourth) << 24);
    }

    std::array<unsigned char, 4> components{0, 0, 0, 255};
};

} // namespace Velnor::Proc
