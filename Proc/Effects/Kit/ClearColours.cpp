#include "Proc/Effects/Kit/ClearColours.h"

#include "Proc/Effects/Kit/PullPush.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace Velnor::Proc {
namespace {

std::uint64_t PixelsOf(ConstPlane const& alpha) { return alpha.GetWidth() / alpha.GetSampleBytes(); }

/// One byte for each sample of a plane: 255 where any pixel of its area is seen, else 0.
struct SeenSamples {
    std::vector<unsigned char> bytes;
    std::uint64_t width, height;

    SeenSamples(ConstPlane const& alpha, PlaneLayout const& of)
        : width((PixelsOf(alpha) + (1U << of.shiftX) - 1) >> of.shiftX),
          height((alpha.GetHeight() + (1U << of.shiftY) - 1) >> of.shiftY) {
        bytes.resize(width * height);
        for (std::uint64_t y = 0; y < alpha.GetHeight(); ++y) {
            unsigned char const* const from = alpha.GetRow(y);
            unsigned char* const to = bytes.data() + (y >> of.shiftY) * width;
            for (std::uint64_t x = 0; x < PixelsOf(alpha); ++x)
                if (from[x * alpha.GetSampleBytes()] != 0) to[x >> of.shiftX] = 255;
        }
    }

    ConstPlane AsPlane() const { return {bytes.data(), static_cast<std::int64_t>(width), width, height}; }
};

bool HasClearPixels(ConstPlane const& alpha) {
    for (std::uint64_t y = 0; y < alpha.GetHeight(); ++y)
        for (std::uint64_t x = 0; x < PixelsOf(alpha); ++x)
            if (alpha.GetRow(y)[x * alpha.GetSampleBytes()] == 0) return true;
    return false;
}

} // namespace

ConstPlane FindClearAlpha(IDataVideo const& picture) {
    PixFmtDescription const& format = picture.GetDescription();
    if (!format.hasAlpha || format.model == ColorModel::Palette) return {};
    ConstPlane const plane = picture.GetPlane(format.alpha.plane);
    unsigned int const step = format.planes[format.alpha.plane].bytes;
    for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) {
        unsigned char const* const row = plane.GetRow(y) + format.alpha.offset;
        unsigned int common = 255;
        for (std::uint64_t x = 0; x < plane.GetWidth(); x += step) common &= row[x];
        if (common != 255)
            return {plane.GetData() + format.alpha.offset, plane.GetStride(), plane.GetWidth(), plane.GetHeight(),
                    step};
    }
    return {};
}

void CoverClearPixels(IDataVideo& picture) {
    PixFmtDescription const& format = picture.GetDescription();
    if (ConstPlane const alpha = FindClearAlpha(picture); alpha.IsEmpty() || !HasClearPixels(alpha)) return;
    for (unsigned char i = 0; i < format.planesCount; ++i) {
        PlaneLayout const& layout = format.planes[i];
        bool const holdsAlpha = i == format.alpha.plane;
        if (holdsAlpha && layout.bytes == 1) continue;
        MutablePlane const plane = picture.GetMutablePlane(i);
        SeenSamples const seen(FindClearAlpha(picture), layout);
        // The alpha may be in the same samples, before or after the colours.
        std::uint64_t const first = holdsAlpha && format.alpha.offset == 0 ? 1 : 0;
        Kernels::FillHoles({plane.GetData() + first, plane.GetStride(), plane.GetWidth() - first, plane.GetHeight()},
                           layout.bytes, seen.AsPlane());
    }
}

VideoHandle CopyCovered(IDataVideo const& picture) {
    VideoHandle const copy = picture.MakeCopy(CopyMode::Value);
    CoverClearPixels(*copy);
    return copy;
}

} // namespace Velnor::Proc
