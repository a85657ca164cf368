// ImageBlender: lays the second picture over the first at its position.
//
//     first = (a * second + (255 - a) * first + 127) / 255          per sample of every plane but the first's own alpha
//     a     = the second's extra alpha, else its own alpha, else 255; joined with the constant of the settings
//
// Chroma planes take extra alpha 1; where it is missing, the mean of the luma's alpha over each chroma sample's area.
// The second picture's chroma falls on the first's chroma grid, so its position there is rounded down. Formats that
// interleave luma and subsampled chroma are blended in their planar twins, to which bytes are only moved. A palette
// picture has no palette in common with another: it counts as RGBA, and so is the result.
#include "Proc/Effects/General/FormatConverter.h"
#include "Proc/Effects/General/Kernels/BlendRows.h"
#include "Proc/Effects/General/PictureAccess.h"
#include "Proc/Effects/Kit/Converter.h"
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Settings/SettingsEffectImageBlender.h"

#include <algorithm>

#include <optional>
#include <vector>

namespace Velnor::Proc {
namespace {

/// The alpha of the second picture for the samples of one kind of plane: one byte for each, or 255 for all.
struct AlphaPlane {
    ConstPlane plane; ///< Empty: there is none.
    unsigned int offset = 0;
    unsigned int step = 1; ///< Bytes from one alpha to the next.
};

/// Where the second plane lies in the first, in samples.
struct Overlap {
    std::int64_t left, top, right, bottom; ///< In the first; empty unless left < right and top < bottom.
    std::int64_t x, y;                     ///< Of the second's first sample in the first.

    Overlap(ConstPlane const& first, ConstPlane const& second, std::int64_t sampleBytes, std::int64_t atX,
            std::int64_t atY)
        : left(std::max<std::int64_t>(0, atX)),
          top(std::max<std::int64_t>(0, atY)),
          right(std::min(Samples(first, sampleBytes), atX + Samples(second, sampleBytes))),
          bottom(std::min(Rows(first), atY + Rows(second))),
          x(atX),
          y(atY) {}

    bool IsEmpty() const { return left >= right || top >= bottom; }

private:
    static std::int64_t Samples(ConstPlane const& plane, std::int64_t bytes) {
        return static_cast<std::int64_t>(plane.GetWidth()) / bytes;
    }
    static std::int64_t Rows(ConstPlane const& plane) { return static_cast<std::int64_t>(plane.GetHeight()); }
};

/// Gives the alpha of rows, joined with the constant.
class AlphaRows {
public:
    AlphaRows(AlphaPlane const& source, BlendAlphaMode alphaMode, int alphaConstant, std::size_t mostPixels)
        : alpha(source), mode(alphaMode), constant(static_cast<unsigned char>(std::clamp(alphaConstant, 0, 255))) {
        buffer.reserve(mostPixels);
    }

    /// `pixels` bytes, no more than the most, from sample x of row y of the second picture, valid until the next call.
    unsigned char const* Get(std::uint64_t x, std::uint64_t y, std::size_t pixels) {
        if (alpha.plane.IsEmpty() || mode == BLEND_CONSTANT) {
            buffer.resize(pixels, mode == BLEND_LARGER ? 255 : constant);
            return buffer.data();
        }
        unsigned char const* const from = alpha.plane.GetRow(y) + x * alpha.step + alpha.offset;
        bool const isNeutral = mode == BLEND_PRODUCT ? constant == 255 : constant == 0;
        if (alpha.step == 1 && isNeutral) return from;
        buffer.resize(pixels);
        for (std::size_t i = 0; i < pixels; ++i) buffer[i] = from[i * alpha.step];
        if (mode == BLEND_PRODUCT)
            Kernels::MultiplyAlpha(buffer.data(), pixels, constant);
        else
            for (unsigned char& value : buffer) value = std::max(value, constant);
        return buffer.data();
    }

private:
    AlphaPlane alpha;
    BlendAlphaMode mode;
    unsigned char constant;
    std::vector<unsigned char> buffer;
};

AlphaPlane FindAlpha(IDataVideo const& picture) {
    if (ConstPlane const extra = picture.GetExtraAlpha(0); !extra.IsEmpty()) return {extra};
    PixFmtDescription const& format = picture.GetDescription();
    if (!format.hasAlpha) return {};
    return {picture.GetPlane(format.alpha.plane), format.alpha.offset, format.planes[format.alpha.plane].bytes};
}

/// The components of a plane are blended; its alpha, and bytes without a meaning, are not.
Kernels::BlendShape GetShape(PixFmtDescription const& format, unsigned char plane) {
    Kernels::BlendShape shape{format.planes[plane].bytes, {}};
    for (std::size_t i = 0; i < format.componentsCount; ++i)
        if (format.components[i].plane == plane) shape.mask[format.components[i].offset] = 255;
    return shape;
}

} // namespace

class ImageBlender : public EffectBaseTwoInput<ITwoInputEffectVideo, SettingsEffectImageBlender> {
public:
    ImageBlender(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseTwoInput(effectFactory, effectContext, ImplNames::DEFAULT) {}

    void ProcessInternal(DataHandle& first, ConstDataHandle const& second) override {
        IDataVideo const& over = AsVideo(second);
        PixFmtDescription const& format = AsVideo(first).GetDescription();
        RequireOneFormat(AsVideo(first), over);
        PixFmt const working = FindWorkingFormat(format);
        if (working == format.format && working == over.GetPixFmt()) return Blend(OwnPicture(first), over);

        DataHandle result = converter.Convert(AsVideo(first), working);
        Blend(OwnPicture(result), AsVideo(converter.Convert(over, working)));
        if (format.model != ColorModel::Palette) result = converter.Convert(AsVideo(result), format.format);
        result->CopyAttributes(*first);
        first = result;
    }

private:
    static void RequireOneFormat(IDataVideo const& first, IDataVideo const& second) {
        if (CountsAs(first.GetPixFmt()) != CountsAs(second.GetPixFmt()))
            VELNOR_THROW(EffectException, "A picture of format " + std::string(second.GetDescription().name) +
                                              " cannot be blended over one of format " +
                                              std::string(first.GetDescription().name) + ": formats must agree.");
    }

    static PixFmt CountsAs(PixFmt format) { return format == PixFmt::PAL8 ? PixFmt::RGBA : format; }

    static PixFmt FindWorkingFormat(PixFmtDescription const& format) {
        return IsPackedLuma(format) ? GetPlanarTwin(format) : CountsAs(format.format);
    }

    /// Whatever can fail does so before the first sample is written.
    void Blend(IDataVideo& first, IDataVideo const& second) const {
        PixFmtDescription const& format = first.GetDescription();
        first.Detach();
        AlphaPlane const alpha = FindAlpha(second);
        VideoHandle means;
        std::vector<AlphaRows> rows;
        for (unsigned char i = 0; i < format.planesCount; ++i) {
            bool const isChroma = format.model == ColorModel::Luma && (i == 1 || i == 2);
            rows.emplace_back(isChroma ? FindChromaAlpha(second, alpha, means) : alpha, settings.GetAlphaMode(),
                              settings.GetAlpha(), first.GetPlane(i).GetWidth());
        }
        for (unsigned char i = 0; i < format.planesCount; ++i) BlendPlane(first, second, i, rows[i]);
        first.DropExtraAlpha();
    }

    /// `means` keeps what had to be computed from one chroma plane to the next.
    AlphaPlane FindChromaAlpha(IDataVideo const& picture, AlphaPlane const& alpha, VideoHandle& means) const {
        if (ConstPlane const extra = picture.GetExtraAlpha(1); !extra.IsEmpty()) return {extra};
        PixFmtDescription const& format = picture.GetDescription();
        if (alpha.plane.IsEmpty() || settings.GetAlphaMode() == BLEND_CONSTANT) return {};
        if (format.chromaShiftX == 0 && format.chromaShiftY == 0) return alpha;
        if (!means) means = MakeChromaMask(*context, alpha.plane, format);
        return {means->GetPlane(0)};
    }

    void BlendPlane(IDataVideo& first, IDataVideo const& second, unsigned char index, AlphaRows& rows) const {
        PixFmtDescription const& format = first.GetDescription();
        PlaneLayout const& layout = format.planes[index];
        Kernels::BlendShape const shape = GetShape(format, index);
        if (std::ranges::count(shape.mask, 0) == 4) return;
        MutablePlane const to = first.GetMutablePlane(index);
        ConstPlane const from = second.GetPlane(index);
        Overlap const overlap(to, from, layout.bytes, settings.GetPositionX() >> layout.shiftX,
                              settings.GetPositionY() >> layout.shiftY);
        if (overlap.IsEmpty()) return;
        auto const pixels = static_cast<std::size_t>(overlap.right - overlap.left);
        auto const x = static_cast<std::uint64_t>(overlap.left - overlap.x);
        for (std::int64_t row = overlap.top; row < overlap.bottom; ++row) {
            auto const y = static_cast<std::uint64_t>(row - overlap.y);
            Kernels::BlendPixels(to.GetRow(static_cast<std::uint64_t>(row)) + overlap.left * layout.bytes,
                                 from.GetRow(y) + x * layout.bytes, rows.Get(x, y, pixels), pixels, shape);
        }
    }

    Converter converter{factory};
};

VELNOR_EFFECT(SettingsEffectImageBlender, TwoInput, ImageBlender)

} // namespace Velnor::Proc
