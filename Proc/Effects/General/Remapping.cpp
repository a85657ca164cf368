// Remapping: each output pixel shows the place in the source that a function names.
//
//     result(x, y) = source(map(x, y))        bilinear; outside the source its nearest edge pixel
//
// The function is asked once a pixel, row by row. Chroma samples move by the mean displacement of the pixels that they
// stand for, so that what does not move keeps its bytes. Without a function the picture is bent as by a lens whose
// distortion grows with the square of the distance from the centre (D. C. Brown, "Decentering Distortion of Lenses",
// 1966, its first radial term). Alpha is interpolated on its own, colours by their alpha: what is clear
// does not bleed into what is seen. Formats that interleave luma and
// chroma are remapped in their planar twins; a palette picture becomes an RGBA picture.
#include "Proc/Effects/General/FormatConverter.h"
#include "Proc/Effects/General/Kernels/RemapRows.h"
#include "Proc/Effects/General/PictureAccess.h"
#include "Proc/Effects/Kit/ClearColours.h"
#include "Proc/Effects/Kit/Converter.h"
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Settings/SettingsEffectRemapping.h"

#include <algorithm>

namespace Velnor::Proc {
namespace {

using Map = SettingsEffectRemapping::Map;

Map LensMap(FrameFormat const& frame, double percent) {
    auto const centreX = static_cast<float>((frame.width - 1) * 0.5);
    auto const centreY = static_cast<float>((frame.height - 1) * 0.5);
    auto const corner = std::max(centreX * centreX + centreY * centreY, 1.0F);
    auto const bend = static_cast<float>(percent / 100) / corner;
    return [=](int x, int y) {
        float const dx = static_cast<float>(x) - centreX;
        float const dy = static_cast<float>(y) - centreY;
        float const scale = 1 + bend * (dx * dx + dy * dy);
        return std::pair(centreX + dx * scale, centreY + dy * scale);
    };
}

struct Positions {
    explicit Positions(std::size_t samples) : x(samples), y(samples) {}
    std::vector<float> x, y;
};

/// Makes the positions of a row of chroma samples of those of the pixel rows that it stands for.
class ChromaPositions {
public:
    ChromaPositions(FrameFormat const& frame, PlaneLayout const& layout)
        : width(frame.width),
          shiftX(layout.shiftX),
          shiftY(layout.shiftY),
          sums((width + (1U << shiftX) - 1) >> shiftX),
          positions(sums.x.size()) {}

    /// Adds the displacements of a row of pixels.
    void Add(Positions const& pixels, std::uint32_t row) {
        ++rowsCount;
        auto const y = static_cast<float>(row);
        for (std::size_t x = 0; x < width; ++x) {
            sums.x[x >> shiftX] += pixels.x[x] - static_cast<float>(x);
            sums.y[x >> shiftX] += pixels.y[x] - y;
        }
    }

    /// Ends a row of chroma samples and starts the next.
    Positions const& Take(std::uint32_t chromaRow) {
        std::size_t const whole = std::size_t{1} << shiftX;
        for (std::size_t i = 0; i < sums.x.size(); ++i) {
            std::size_t const columns = std::min(whole, width - i * whole);
            auto const pixels = static_cast<float>(columns * rowsCount);
            float const perX = 1 / (pixels * static_cast<float>(whole));
            float const perY = 1 / (pixels * static_cast<float>(1U << shiftY));
            positions.x[i] = static_cast<float>(i) + sums.x[i] * perX;
            positions.y[i] = static_cast<float>(chromaRow) + sums.y[i] * perY;
        }
        std::ranges::fill(sums.x, 0.0F);
        std::ranges::fill(sums.y, 0.0F);
        rowsCount = 0;
        return positions;
    }

private:
    std::size_t width;
    unsigned int shiftX, shiftY;
    std::size_t rowsCount = 0;
    Positions sums, positions;
};

bool IsSubsampled(PlaneLayout const& layout) { return layout.shiftX > 0 || layout.shiftY > 0; }

/// One run over the rows of a picture whose planes each hold one kind of sample.
class PictureRemapper {
public:
    PictureRemapper(IEffectContext& context, IDataVideo const& sourcePicture, IDataVideo& targetPicture)
        : source(sourcePicture),
          format(source.GetDescription()),
          frame(source.GetFrameFormat()),
          positions(frame.width),
          pixelTaps(frame.width),
          chroma(frame, format.planes[1]),
          chromaTaps((frame.width + (1U << format.planes[1].shiftX) - 1) >> format.planes[1].shiftX),
          alpha(FindClearAlpha(source)) {
        if (!alpha.IsEmpty() && IsSubsampled(format.planes[1])) {
            chromaAlpha = MakeChromaMask(context, alpha, format);
            covered = CopyCovered(source);
        }
        for (unsigned char i = 0; i < format.planesCount; ++i) targets.push_back(targetPicture.GetMutablePlane(i));
    }

    void Run(Map const& map) {
        bool const hasChroma = format.planesCount > 1 && IsSubsampled(format.planes[1]);
        std::uint32_t const whole = 1U << format.planes[1].shiftY;
        for (std::uint32_t y = 0; y < frame.height; ++y) {
            for (std::uint32_t x = 0; x < frame.width; ++x) {
                auto const [atX, atY] = map(static_cast<int>(x), static_cast<int>(y));
                positions.x[x] = atX;
                positions.y[x] = atY;
            }
            Write(positions, pixelTaps, y, false);
            if (!hasChroma) continue;
            chroma.Add(positions, y);
            if ((y + 1) % whole == 0 || y + 1 == frame.height)
                Write(chroma.Take(y / whole), chromaTaps, y / whole, true);
        }
    }

private:
    /// A row of all planes of one of the two resolutions.
    void Write(Positions const& from, Kernels::RowTaps& taps, std::uint32_t row, bool isChroma) {
        bool isSplit = false;
        for (unsigned char i = 0; i < format.planesCount; ++i) {
            PlaneLayout const& layout = format.planes[i];
            if (IsSubsampled(layout) != isChroma) continue;
            ConstPlane const plane = source.GetPlane(i);
            if (!isSplit)
                Kernels::SplitPositions(from.x.data(), from.y.data(),
                                        static_cast<std::uint32_t>(plane.GetWidth() / layout.bytes),
                                        static_cast<std::uint32_t>(plane.GetHeight()), taps);
            isSplit = true;
            Kernels::SampleRow(plane, layout.bytes, taps, targets[i].GetRow(row));
            bool const isPacked = i == format.alpha.plane;
            if (alpha.IsEmpty() || (isPacked && layout.bytes == 1)) continue;
            Kernels::WeighRow(plane, layout.bytes, isChroma ? chromaAlpha->GetPlane(0) : alpha,
                              isPacked ? format.alpha.offset : Kernels::NO_ALPHA, taps, targets[i].GetRow(row));
            if (isChroma) CoverChroma(i, row);
        }
    }

    /// A pixel may be seen whose chroma comes from where all is clear, since chroma moves by the mean of several.
    void CoverChroma(unsigned char plane, std::uint32_t row) {
        std::vector<unsigned char> opacities(chromaTaps.column.size());
        std::vector<unsigned char> around(opacities.size());
        Kernels::SampleRow(chromaAlpha->GetPlane(0), 1, chromaTaps, opacities.data());
        Kernels::SampleRow(covered->GetPlane(plane), 1, chromaTaps, around.data());
        for (std::uint32_t x = 0; x < around.size(); ++x)
            if (opacities[x] == 0 && IsSeen(x, row)) targets[plane].GetRow(row)[x] = around[x];
    }

    /// Whether anything is seen of the result in the area of a chroma sample.
    bool IsSeen(std::uint32_t chromaX, std::uint32_t chromaY) const {
        PlaneLayout const& layout = format.planes[1];
        MutablePlane const& result = targets[format.alpha.plane];
        for (std::uint32_t y = chromaY << layout.shiftY; y < std::min((chromaY + 1) << layout.shiftY, frame.height);
             ++y)
            for (std::uint32_t x = chromaX << layout.shiftX; x < std::min((chromaX + 1) << layout.shiftX, frame.width);
                 ++x)
                if (result.GetRow(y)[x] != 0) return true;
        return false;
    }

    IDataVideo const& source;
    PixFmtDescription const& format;
    FrameFormat const frame;
    std::vector<MutablePlane> targets;
    Positions positions;
    Kernels::RowTaps pixelTaps;
    ChromaPositions chroma;
    Kernels::RowTaps chromaTaps;
    ConstPlane alpha; ///< Empty where all colours count alike.
    VideoHandle chromaAlpha;
    VideoHandle covered; ///< The source, for chroma.
};

} // namespace

class Remapping : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectRemapping> {
public:
    Remapping(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext, ImplNames::DEFAULT) {}

    void ProcessInternal(DataHandle& data) override {
        IDataVideo const& picture = AsVideo(data);
        PixFmtDescription const& format = picture.GetDescription();
        FrameFormat const frame = picture.GetFrameFormat();
        Map map = settings.GetMap();
        if (!map) map = LensMap(frame, settings.GetLens());

        bool const isPalette = format.model == ColorModel::Palette;
        PixFmt const working = isPalette ? PixFmt::RGBA : IsPackedLuma(format) ? GetPlanarTwin(format) : format.format;
        ConstDataHandle const source = working == format.format ? data : converter.Convert(picture, working);
        VideoHandle const result = context->CreateImage(working, frame);
        PictureRemapper(*context, AsVideo(source), *result).Run(map);
        data = isPalette ? result : converter.Convert(*result, format.format);
    }

private:
    Converter converter{factory};
};

VELNOR_EFFECT(SettingsEffectRemapping, OneInput, Remapping)

} // namespace Velnor::Proc
