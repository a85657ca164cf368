#include "Core/PixFmt.h"

#include <algorithm>

namespace Velnor {
namespace {

constexpr std::int64_t PALETTE_BYTES = 256 * 4;

using Planes = std::array<PlaneLayout, 4>;
using Places = std::array<ComponentPlace, 3>;

constexpr PixFmtDescription Grey() {
    return {PixFmt::GRAY8, "gray8", ColorModel::Grey, 1, Planes{{{1, 0, 0}}}, 1, Places{{{0, 0}}}, false, {}, 0, 0};
}

constexpr PixFmtDescription GreyAlpha() {
    return {PixFmt::YA8, "ya8", ColorModel::Grey, 1, Planes{{{2, 0, 0}}}, 1, Places{{{0, 0}}}, true, {0, 1}, 0, 0};
}

constexpr PixFmtDescription Palette() {
    return {PixFmt::PAL8,
            "pal8",
            ColorModel::Palette,
            2,
            Planes{{{1, 0, 0}, {4, 0, 0}}},
            3,
            Places{{{1, 0}, {1, 1}, {1, 2}}},
            true,
            {1, 3},
            0,
            0};
}

/// Luma, two chroma planes, and alpha at the luma's resolution when `alpha`.
constexpr PixFmtDescription Planar(PixFmt format, std::string_view name, std::uint8_t x, std::uint8_t y,
                                   bool alpha = false) {
    return {format,
            name,
            ColorModel::Luma,
            static_cast<std::uint8_t>(alpha ? 4 : 3),
            Planes{{{1, 0, 0}, {1, x, y}, {1, x, y}, {static_cast<std::uint8_t>(alpha ? 1 : 0), 0, 0}}},
            3,
            Places{{{0, 0}, {1, 0}, {2, 0}}},
            alpha,
            {3, 0},
            x,
            y};
}

/// Luma and one plane of interleaved chroma; `blue` is the offset of the blue difference.
constexpr PixFmtDescription SemiPlanar(PixFmt format, std::string_view name, std::uint8_t x, std::uint8_t y,
                                       std::uint8_t blue) {
    return {format,
            name,
            ColorModel::Luma,
            2,
            Planes{{{1, 0, 0}, {2, x, y}}},
            3,
            Places{{{0, 0}, {1, blue}, {1, static_cast<std::uint8_t>(1 - blue)}}},
            false,
            {},
            x,
            y};
}

/// Luma and chroma in one plane, in groups of 2^x pixels.
constexpr PixFmtDescription PackedLuma(PixFmt format, std::string_view name, std::uint8_t bytes, std::uint8_t x,
                                       std::uint8_t luma, std::uint8_t blue, std::uint8_t red) {
    return {format,
            name,
            ColorModel::Luma,
            1,
            Planes{{{bytes, x, 0}}},
            3,
            Places{{{0, luma}, {0, blue}, {0, red}}},
            false,
            {},
            x,
            0};
}

constexpr int NO_ALPHA = -1;

constexpr PixFmtDescription PackedRgb(PixFmt format, std::string_view name, std::uint8_t bytes, std::uint8_t red,
                                      std::uint8_t green, std::uint8_t blue, int alpha) {
    return {format,
            name,
            ColorModel::Rgb,
            1,
            Planes{{{bytes, 0, 0}}},
            3,
            Places{{{0, red}, {0, green}, {0, blue}}},
            alpha != NO_ALPHA,
            {0, static_cast<std::uint8_t>(alpha == NO_ALPHA ? 0 : alpha)},
            0,
            0};
}

constexpr PixFmtDescription PlanarRgb(PixFmt format, std::string_view name, bool alpha) {
    std::uint8_t const last = alpha ? 1 : 0;
    return {format,
            name,
            ColorModel::Rgb,
            static_cast<std::uint8_t>(alpha ? 4 : 3),
            Planes{{{1, 0, 0}, {1, 0, 0}, {1, 0, 0}, {last, 0, 0}}},
            3,
            Places{{{2, 0}, {0, 0}, {1, 0}}},
            alpha,
            {3, 0},
            0,
            0};
}

/// The last group of a plane may reach past the picture: sizes round up.
constexpr std::int64_t GroupsOf(int size, std::uint8_t shift) {
    return size <= 0 ? 0 : (static_cast<std::int64_t>(size) + (1 << shift) - 1) >> shift;
}

} // namespace

// Ordered by code, which Find relies on.
constinit std::array<PixFmtDescription, 38> const PixFmtDescription::s_pixelFormatRecords{
    Planar(PixFmt::YUV420P, "yuv420p", 1, 1),
    PackedLuma(PixFmt::YUYV422, "yuyv422", 4, 1, 0, 1, 3),
    PackedRgb(PixFmt::RGB24, "rgb24", 3, 0, 1, 2, NO_ALPHA),
    PackedRgb(PixFmt::BGR24, "bgr24", 3, 2, 1, 0, NO_ALPHA),
    Planar(PixFmt::YUV422P, "yuv422p", 1, 0),
    Planar(PixFmt::YUV444P, "yuv444p", 0, 0),
    Planar(PixFmt::YUV410P, "yuv410p", 2, 2),
    Planar(PixFmt::YUV411P, "yuv411p", 2, 0),
    Grey(),
    Palette(),
    Planar(PixFmt::YUVJ420P, "yuvj420p", 1, 1),
    Planar(PixFmt::YUVJ422P, "yuvj422p", 1, 0),
    Planar(PixFmt::YUVJ444P, "yuvj444p", 0, 0),
    PackedLuma(PixFmt::UYVY422, "uyvy422", 4, 1, 1, 0, 2),
    PackedLuma(PixFmt::UYYVYY411, "uyyvyy411", 6, 2, 1, 0, 3),
    SemiPlanar(PixFmt::NV12, "nv12", 1, 1, 0),
    SemiPlanar(PixFmt::NV21, "nv21", 1, 1, 1),
    PackedRgb(PixFmt::ARGB, "argb", 4, 1, 2, 3, 0),
    PackedRgb(PixFmt::RGBA, "rgba", 4, 0, 1, 2, 3),
    PackedRgb(PixFmt::ABGR, "abgr", 4, 3, 2, 1, 0),
    PackedRgb(PixFmt::BGRA, "bgra", 4, 2, 1, 0, 3),
    Planar(PixFmt::YUV440P, "yuv440p", 0, 1),
    Planar(PixFmt::YUVJ440P, "yuvj440p", 0, 1),
    Planar(PixFmt::YUVA420P, "yuva420p", 1, 1, true),
    GreyAlpha(),
    PlanarRgb(PixFmt::GBRP, "gbrp", false),
    Planar(PixFmt::YUVA422P, "yuva422p", 1, 0, true),
    Planar(PixFmt::YUVA444P, "yuva444p", 0, 0, true),
    SemiPlanar(PixFmt::NV16, "nv16", 1, 0, 0),
    PackedLuma(PixFmt::YVYU422, "yvyu422", 4, 1, 0, 3, 1),
    PlanarRgb(PixFmt::GBRAP, "gbrap", true),
    PackedRgb(PixFmt::XRGB, "0rgb", 4, 1, 2, 3, NO_ALPHA),
    PackedRgb(PixFmt::RGBX, "rgb0", 4, 0, 1, 2, NO_ALPHA),
    PackedRgb(PixFmt::XBGR, "0bgr", 4, 3, 2, 1, NO_ALPHA),
    PackedRgb(PixFmt::BGRX, "bgr0", 4, 2, 1, 0, NO_ALPHA),
    Planar(PixFmt::YUVJ411P, "yuvj411p", 2, 0),
    SemiPlanar(PixFmt::NV24, "nv24", 0, 0, 0),
    SemiPlanar(PixFmt::NV42, "nv42", 0, 0, 1),
};

std::span<PixFmtDescription const> PixFmtDescription::GetAll() { return s_pixelFormatRecords; }

PixFmtDescription const* PixFmtDescription::Find(PixFmt format) {
    auto const found = std::ranges::lower_bound(s_pixelFormatRecords, format, {}, &PixFmtDescription::format);
    return found != s_pixelFormatRecords.end() && found->format == format ? &*found : nullptr;
}

PixFmtDescription const* PixFmtDescription::Find(std::string_view name) {
    auto const found = std::ranges::find(s_pixelFormatRecords, name, &PixFmtDescription::name);
    return found != s_pixelFormatRecords.end() ? &*found : nullptr;
}

std::int64_t PixFmtDescription::GetPlanWidthSize(int width, unsigned char plane) const {
    if (plane >= planesCount) return 0;
    if (model == ColorModel::Palette && plane == 1) return PALETTE_BYTES;
    return GroupsOf(width, planes[plane].shiftX) * planes[plane].bytes;
}

std::int64_t PixFmtDescription::GetPlanHeight(int height, unsigned char plane) const {
    if (plane >= planesCount) return 0;
    if (model == ColorModel::Palette && plane == 1) return 1;
    return GroupsOf(height, planes[plane].shiftY);
}

bool PixFmtDescription::IsAligned(std::uint32_t x, std::uint32_t y) const {
    return std::ranges::all_of(planes, [&](PlaneLayout const& plane) {
        return (x & ((1U << plane.shiftX) - 1)) == 0 && (y & ((1U << plane.shiftY) - 1)) == 0;
    });
}

} // namespace Velnor
