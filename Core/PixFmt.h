#pragma once

#include "Core/Export.h"

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace Velnor {

/// Pixel formats, 8 bits a component. The codes are part of the binary contract. Packed formats are named by the bytes
/// of a pixel in memory (BGRA: byte 0 is blue); planar luma/chroma formats are full range, BT.601 (JFIF), so the J
/// codes are synonyms in that respect.
enum class PixFmt : std::int32_t {
    NONE = -1,
    YUV420P = 0,
    YUYV422 = 1,
    RGB24 = 2,
    BGR24 = 3,
    YUV422P = 4,
    YUV444P = 5,
    YUV410P = 6,
    YUV411P = 7,
    GRAY8 = 8,
    PAL8 = 11, ///< Plane 0: one index a pixel. Plane 1: 256 entries of 4 bytes, red, green, blue, opacity.
    YUVJ420P = 12,
    YUVJ422P = 13,
    YUVJ444P = 14,
    UYVY422 = 15,
    UYYVYY411 = 16,
    NV12 = 23,
    NV21 = 24,
    ARGB = 25,
    RGBA = 26,
    ABGR = 27,
    BGRA = 28,
    YUV440P = 31,
    YUVJ440P = 32,
    YUVA420P = 33,
    YA8 = 58,
    GBRP = 73,
    YUVA422P = 80,
    YUVA444P = 81,
    NV16 = 103,
    YVYU422 = 110,
    GBRAP = 113,
    XRGB = 120, ///< 0rgb: the first byte has no meaning.
    RGBX = 121, ///< rgb0
    XBGR = 122, ///< 0bgr
    BGRX = 123, ///< bgr0
    YUVJ411P = 140,
    NV24 = 191,
    NV42 = 192,
};

/// What the components of a format mean.
enum class ColorModel : std::uint8_t { Grey, Luma, Rgb, Palette };

/// Where one component lies: `offset` bytes into each sample group of `plane`.
struct ComponentPlace {
    std::uint8_t plane = 0;
    std::uint8_t offset = 0;
};

/// How one plane lies in memory: one group of `bytes` for every 2^shiftX x 2^shiftY pixels of the picture.
struct PlaneLayout {
    std::uint8_t bytes = 0;
    std::uint8_t shiftX = 0;
    std::uint8_t shiftY = 0;
};

/// The record of one pixel format.
struct VELNOR_API PixFmtDescription {
    PixFmt format = PixFmt::NONE;
    std::string_view name; ///< Lower case, as picture and video libraries spell it: "yuv420p", "bgr0".
    ColorModel model = ColorModel::Grey;
    std::uint8_t planesCount = 0; ///< 1 to 4.
    std::array<PlaneLayout, 4> planes{};
    /// Components in the order red, green, blue or luma, blue chroma, red chroma. `componentsCount` are in use.
    std::uint8_t componentsCount = 0;
    std::array<ComponentPlace, 3> components{};
    bool hasAlpha = false;
    ComponentPlace alpha{}; ///< Meaningful where hasAlpha.

    /// Resolution of the chroma against the luma, as powers of two. 0 for formats without subsampling.
    std::uint8_t chromaShiftX = 0;
    std::uint8_t chromaShiftY = 0;

    /// The record of a format, or null when the format is not one of this table.
    static PixFmtDescription const* Find(PixFmt format);
    /// The record of that name, or null. Names are matched exactly.
    static PixFmtDescription const* Find(std::string_view name);
    static std::span<PixFmtDescription const> GetAll();

    /// Width in bytes of a plane of a picture `width` pixels wide; partial groups count whole. 0 for a missing plane.
    /// The palette of PAL8 is a plane of one row of 1024 bytes.
    std::int64_t GetPlanWidthSize(int width, unsigned char plane) const;
    /// Rows of a plane of a picture `height` pixels high.
    std::int64_t GetPlanHeight(int height, unsigned char plane) const;

    /// Whether a rectangle whose corner is (x, y) begins at a whole group of every plane.
    bool IsAligned(std::uint32_t x, std::uint32_t y) const;

private:
    static std::array<PixFmtDescription, 38> const s_pixelFormatRecords;
};

} // namespace Velnor
