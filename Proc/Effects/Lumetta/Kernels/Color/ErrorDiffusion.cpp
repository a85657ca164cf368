#include "Proc/Effects/Lumetta/Kernels/Color/ErrorDiffusion.h"

#include <algorithm>

namespace Velnor::Proc::Kernels {

PaletteRows::PaletteRows(PaletteMap& paletteMap, std::uint64_t widthInPixels, bool diffuse, unsigned int leastOpacity)
    : map(paletteMap),
      width(widthInPixels),
      leastSeen(leastOpacity),
      isDiffusing(diffuse),
      errors(diffuse ? widthInPixels + 2 : 0),
      next(errors.size()) {}

void PaletteRows::MapRow(unsigned char const* pixels, PackedRgb const& format, unsigned char* indices) {
    isDiffusing ? Diffuse(pixels, format, indices) : Plain(pixels, format, indices);
}

void PaletteRows::Plain(unsigned char const* pixels, PackedRgb const& format, unsigned char* indices) {
    std::size_t const red = format.isBlueFirst ? 2 : 0;
    for (std::uint64_t x = 0; x < width; ++x, pixels += format.pixelBytes)
        indices[x] = static_cast<unsigned char>(map.Find(pixels[red], pixels[1], pixels[2 - red]));
}

void PaletteRows::Diffuse(unsigned char const* pixels, PackedRgb const& format, unsigned char* indices) {
    std::array<std::size_t, 3> const bytes{format.isBlueFirst ? 2U : 0U, 1U, format.isBlueFirst ? 0U : 2U};
    std::ptrdiff_t const step = isLeftward ? -1 : 1;
    std::ranges::fill(next, std::array<int, 3>{});
    for (std::uint64_t n = 0; n < width; ++n) {
        std::uint64_t const x = isLeftward ? width - 1 - n : n;
        unsigned char const* const pixel = pixels + x * format.pixelBytes;
        if (leastSeen > 0 && pixel[3] < leastSeen) {
            indices[x] = static_cast<unsigned char>(map.Find(pixel[bytes[0]], pixel[bytes[1]], pixel[bytes[2]]));
            continue;
        }
        std::array<int, 3>* const here = &errors[x + 1];
        std::array<int, 3>* const below = &next[x + 1];
        std::array<int, 3> wanted;
        // Cut to what a level can be: error that no entry can make good would pile up and burst out elsewhere.
        for (std::size_t k = 0; k < 3; ++k) wanted[k] = std::clamp(pixel[bytes[k]] + (((*here)[k] + 8) >> 4), 0, 255);
        std::size_t const index = map.Find(static_cast<std::uint32_t>(wanted[0]), static_cast<std::uint32_t>(wanted[1]),
                                           static_cast<std::uint32_t>(wanted[2]));
        indices[x] = static_cast<unsigned char>(index);
        for (std::size_t k = 0; k < 3; ++k) {
            int const error = wanted[k] - map.GetEntry(index)[k];
            here[step][k] += 7 * error;
            below[-step][k] += 3 * error;
            below[0][k] += 5 * error;
            below[step][k] += error;
        }
    }
    errors.swap(next);
    isLeftward = !isLeftward;
}

} // namespace Velnor::Proc::Kernels
