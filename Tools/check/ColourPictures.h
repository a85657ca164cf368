#pragma once

// Pictures of known colours in every format, written and read sample by sample from the formats' records: slow, and
// independent of the code under test.

#include "Proc/Interfaces/IEffectContext.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <ostream>
#include <vector>

namespace Velnor::Proc::Check {

struct Colour4 {
    double red = 0, green = 0, blue = 0, alpha = 255;
    friend bool operator==(Colour4 const&, Colour4 const&) = default;
    friend void PrintTo(Colour4 const& c, std::ostream* out) {
        *out << c.red << " " << c.green << " " << c.blue << " " << c.alpha;
    }
};

inline double Luma(Colour4 const& c) { return 0.299 * c.red + 0.587 * c.green + 0.114 * c.blue; }

/// Byte of a component's sample for pixel (x, y), from the start of its plane's row; and that row.
struct SamplePlace {
    std::uint64_t row;
    std::uint64_t byte;
};

inline SamplePlace FindSample(PixFmtDescription const& format, ComponentPlace place, bool isLuma, std::uint32_t x,
                              std::uint32_t y) {
    PlaneLayout const layout = format.planes[place.plane];
    std::uint64_t byte = std::uint64_t{x >> layout.shiftX} * layout.bytes + place.offset;
    if (isLuma && layout.shiftX == 1) byte += 2 * (x & 1);
    if (isLuma && layout.shiftX == 2) byte += std::array{0U, 1U, 3U, 4U}[x & 3];
    return {y >> layout.shiftY, byte};
}

inline unsigned char Sample(IDataVideo const& picture, ComponentPlace place, bool isLuma, std::uint32_t x,
                            std::uint32_t y) {
    SamplePlace const at = FindSample(picture.GetDescription(), place, isLuma, x, y);
    return picture.GetPlane(place.plane).GetRow(at.row)[at.byte];
}

/// The colour of a pixel; chroma is that of the sample whose area the pixel stands in.
inline Colour4 ReadColour(IDataVideo const& picture, std::uint32_t x, std::uint32_t y) {
    PixFmtDescription const& format = picture.GetDescription();
    if (format.model == ColorModel::Palette) {
        unsigned char const* const entry = picture.GetPlane(1).GetRow(0) + 4 * picture.GetPlane(0).GetRow(y)[x];
        return {double(entry[0]), double(entry[1]), double(entry[2]), double(entry[3])};
    }
    std::array<double, 3> v{};
    for (std::size_t i = 0; i < format.componentsCount; ++i)
        v[i] = Sample(picture, format.components[i], i == 0 && format.model == ColorModel::Luma, x, y);
    double const alpha = format.hasAlpha ? Sample(picture, format.alpha, false, x, y) : 255;
    if (format.model == ColorModel::Rgb) return {v[0], v[1], v[2], alpha};
    if (format.model == ColorModel::Grey) return {v[0], v[0], v[0], alpha};
    double const u = v[1] - 128;
    double const w = v[2] - 128;
    return {v[0] + 1.402 * w, v[0] - 0.344136 * u - 0.714136 * w, v[0] + 1.772 * u, alpha};
}

/// Paints a picture pixel by pixel; chroma samples get the mean of their area, a palette what it can hold.
template <class ColourAt>
VideoHandle Paint(IEffectContext& context, PixFmt pixFmt, std::uint32_t width, std::uint32_t height,
                  ColourAt const& colourAt) {
    VideoHandle const picture = context.CreateImage(pixFmt, FrameFormat::Square(width, height));
    PixFmtDescription const& format = picture->GetDescription();
    auto const put = [&](ComponentPlace place, bool isLuma, std::uint32_t x, std::uint32_t y, double value) {
        SamplePlace const at = FindSample(format, place, isLuma, x, y);
        picture->GetMutablePlane(place.plane).GetRow(at.row)[at.byte] =
            static_cast<unsigned char>(std::clamp(std::lround(value), 0L, 255L));
    };
    std::vector<Colour4> palette;
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x) {
            Colour4 const c = colourAt(x, y);
            if (format.model == ColorModel::Palette) {
                auto const found = std::find(palette.begin(), palette.end(), c);
                picture->GetMutablePlane(0).GetRow(y)[x] = static_cast<unsigned char>(found - palette.begin());
                if (found == palette.end()) palette.push_back(c);
                continue;
            }
            if (format.hasAlpha) put(format.alpha, false, x, y, c.alpha);
            if (format.model == ColorModel::Rgb) {
                put(format.components[0], false, x, y, c.red);
                put(format.components[1], false, x, y, c.green);
                put(format.components[2], false, x, y, c.blue);
                continue;
            }
            put(format.components[0], format.model == ColorModel::Luma, x, y, Luma(c));
            std::uint32_t const across = 1U << format.chromaShiftX;
            std::uint32_t const down = 1U << format.chromaShiftY;
            if (format.model == ColorModel::Grey || x % across != 0 || y % down != 0) continue;
            double u = 0;
            double v = 0;
            for (std::uint32_t i = 0; i < across * down; ++i) {
                Colour4 const near = colourAt(x + i % across, y + i / across);
                u += 0.564334 * (near.blue - Luma(near)) / (across * down);
                v += 0.713267 * (near.red - Luma(near)) / (across * down);
            }
            put(format.components[1], false, x, y, 128 + u);
            put(format.components[2], false, x, y, 128 + v);
        }
    if (format.model == ColorModel::Palette)
        for (std::size_t i = 0; i < 256; ++i) {
            Colour4 const c = i < palette.size() ? palette[i] : Colour4{};
            std::array<double, 4> const bytes{c.red, c.green, c.blue, c.alpha};
            for (std::size_t k = 0; k < 4; ++k)
                picture->GetMutablePlane(1).GetRow(0)[i * 4 + k] = static_cast<unsigned char>(bytes[k]);
        }
    return picture;
}

} // namespace Velnor::Proc::Check
