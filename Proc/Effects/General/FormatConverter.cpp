#include "Proc/Effects/General/FormatConverter.h"

#include "Proc/Effects/General/Kernels/ByteOrder.h"
#include "Proc/Effects/General/Kernels/PaletteRows.h"
#include "Proc/Effects/General/PictureAccess.h"
#include "Proc/Effects/General/SampleMove.h"
#include "Proc/Effects/General/WeightedScale.h"
#include "Proc/Effects/Kit/Bands.h"
#include "Proc/Effects/Kit/ClearColours.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <string>

namespace Velnor::Proc {
namespace {

PixFmtDescription const& Describe(PixFmt format) { return *PixFmtDescription::Find(format); }

bool IsPackedRgb(PixFmtDescription const& format) { return format.model == ColorModel::Rgb && format.planesCount == 1; }

bool IsSubsampled(PixFmtDescription const& format) { return format.chromaShiftX != 0 || format.chromaShiftY != 0; }

/// Whether every plane has a sample for each pixel.
bool HasSamplesOfPixels(PixFmtDescription const& format) {
    return format.model != ColorModel::Palette && !IsSubsampled(format);
}

/// Alpha-less formats with the same bytes, for sources: the alpha is moved apart from the colour.
PixFmt WithoutAlpha(PixFmt format) {
    switch (format) {
    case PixFmt::ARGB:
        return PixFmt::XRGB;
    case PixFmt::RGBA:
        return PixFmt::RGBX;
    case PixFmt::ABGR:
        return PixFmt::XBGR;
    case PixFmt::BGRA:
        return PixFmt::BGRX;
    case PixFmt::GBRAP:
        return PixFmt::GBRP;
    case PixFmt::YUVA420P:
        return PixFmt::YUV420P;
    case PixFmt::YUVA422P:
        return PixFmt::YUV422P;
    case PixFmt::YUVA444P:
        return PixFmt::YUV444P;
    default:
        return format;
    }
}

/// How the bytes of a pixel move between two packed formats. An alpha that the source lacks, and the byte that none of
/// the target's components uses, become 255.
std::optional<Kernels::ByteOrder> FindByteOrder(PixFmtDescription const& from, PixFmtDescription const& to) {
    if (!IsPackedRgb(from) || !IsPackedRgb(to)) return std::nullopt;
    Kernels::ByteOrder order{};
    order.fill(Kernels::OPAQUE_BYTE);
    for (std::size_t i = 0; i < 3; ++i) order.at(to.components[i].offset) = from.components[i].offset;
    if (from.hasAlpha && to.hasAlpha) order.at(to.alpha.offset) = from.alpha.offset;
    return order;
}

template <class Side, class Picture, class GetPlane>
Side MakeSide(Picture& picture, PixFmt format, GetPlane const& getPlane) {
    FrameFormat const frame = picture.GetFrameFormat();
    Side side{format, frame.width, frame.height, {}};
    for (unsigned char i = 0; i < Describe(format).planesCount; ++i) side.planes[i] = getPlane(i);
    return side;
}

ScalerSource SourceSide(IDataVideo const& picture, PixFmt format) {
    return MakeSide<ScalerSource>(picture, format, [&](unsigned char i) { return picture.GetPlane(i); });
}

ScalerTarget TargetSide(IDataVideo& picture, PixFmt format) {
    return MakeSide<ScalerTarget>(picture, format, [&](unsigned char i) { return picture.GetMutablePlane(i); });
}

/// Reorders the bytes of pixels; the planes have as many rows as the picture.
void Reorder(FrameFormat const& frame, ConstPlane const& source, MutablePlane const& target,
             Kernels::ByteOrder const& order) {
    auto const sourceBytes = static_cast<unsigned int>(source.GetSampleBytes());
    auto const targetBytes = static_cast<unsigned int>(target.GetSampleBytes());
    RunBands(CutIntoBands(frame.width, frame.height), [&](Band const& band, std::size_t) {
        Kernels::ReorderBytes(TakeRows(source, band), sourceBytes, TakeRows(target, band), targetBytes, order);
    });
}

} // namespace

PixFmt GetPlanarTwin(PixFmtDescription const& format) {
    if (format.format == PixFmt::YA8) return PixFmt::YUVA444P;
    if (format.model != ColorModel::Luma || format.planesCount >= 3) return format.format;
    for (PixFmtDescription const& twin : PixFmtDescription::GetAll())
        if (twin.model == ColorModel::Luma && twin.planesCount == 3 && twin.chromaShiftX == format.chromaShiftX &&
            twin.chromaShiftY == format.chromaShiftY)
            return twin.format;
    return format.format;
}

VideoHandle FormatConverter::Convert(IDataVideo const& source, PixFmt target) {
    PixFmtDescription const* const to = PixFmtDescription::Find(target);
    if (to == nullptr)
        VELNOR_THROW(ProcException, "A picture of format " + std::string(source.GetDescription().name) +
                                        " cannot be converted to format " + std::to_string(static_cast<int>(target)) +
                                        ", which is unknown.");
    PixFmtDescription const& from = source.GetDescription();
    if (from.format == target) {
        VideoHandle const same = source.MakeCopy(CopyMode::Share);
        same->DropExtraAlpha();
        return same;
    }
    if (to->model == ColorModel::Palette) return MakePalettePicture(*pictures, *Convert(source, PixFmt::RGBA));
    if (from.model == ColorModel::Palette) return ChangePalette(source, target);
    if (IsSampleMove(from, *to)) return MoveSamples(source, target);
    return ChangeColour(source, target);
}

VideoHandle FormatConverter::Make(IDataVideo const& source, PixFmt format) const {
    return pictures->CreateImage(format, source.GetFrameFormat());
}

bool FormatConverter::ConvertInPlace(IDataVideo& picture, PixFmt target) {
    unsigned int const bytes = picture.GetDescription().planes[0].bytes;
    auto const order = FindByteOrder(picture.GetDescription(), Describe(target));
    if (!order || Describe(target).planes[0].bytes != bytes) return false;
    MutablePlane const plane = picture.GetMutablePlane(0);
    Reorder(picture.GetFrameFormat(), plane, plane, *order);
    picture.Relabel(target);
    return true;
}

VideoHandle FormatConverter::MoveSamples(IDataVideo const& source, PixFmt target) {
    VideoHandle const result = Make(source, target);
    if (auto const order = FindByteOrder(source.GetDescription(), Describe(target))) {
        Reorder(source.GetFrameFormat(), source.GetPlane(0), result->GetMutablePlane(0), *order);
    } else {
        MoveColour(source, *result);
        MoveAlpha(source, *result);
    }
    return result;
}

/// Where each pixel has samples of its own, the palette is converted and not the pixels: as a picture of one row, a
/// pixel an entry.
VideoHandle FormatConverter::ChangePalette(IDataVideo const& source, PixFmt target) {
    PixFmtDescription const& to = Describe(target);
    FrameFormat const frame = source.GetFrameFormat();
    FrameFormat const entries = FrameFormat::Square(256, 1);
    bool const isWorthIt = std::uint64_t{frame.width} * frame.height > entries.width;
    if (!isWorthIt || !HasSamplesOfPixels(to)) {
        VideoHandle const rgba = MoveSamples(source, PixFmt::RGBA);
        return target == PixFmt::RGBA ? rgba : Convert(*rgba, target);
    }
    VideoHandle const colours = pictures->CreateImage(PixFmt::PAL8, entries);
    CopyPlane(source.GetPlane(1), colours->GetMutablePlane(1));
    std::iota(colours->GetMutablePlane(0).GetRow(0), colours->GetMutablePlane(0).GetRow(0) + entries.width, 0);
    VideoHandle const converted = Convert(*colours, target);
    VideoHandle const result = Make(source, target);
    ConstPlane const indices = source.GetPlane(0);
    for (unsigned char plane = 0; plane < to.planesCount; ++plane) {
        unsigned char const* const samples = converted->GetPlane(plane).GetRow(0);
        MutablePlane const looked = result->GetMutablePlane(plane);
        RunBands(CutIntoBands(frame.width, frame.height), [&](Band const& band, std::size_t) {
            Kernels::LookUpSamples(TakeRows(indices, band), samples, to.planes[plane].bytes, TakeRows(looked, band));
        });
    }
    return result;
}

/// The formats differ in matrix or in chroma resolution. What is neither planar nor packed red, green and blue goes
/// through its planar twin.
VideoHandle FormatConverter::ChangeColour(IDataVideo const& source, PixFmt target) {
    PixFmtDescription const& from = source.GetDescription();
    PixFmtDescription const& to = Describe(target);
    PixFmt const sourceTwin = GetPlanarTwin(from);
    if (sourceTwin != from.format) return Convert(*MoveSamples(source, sourceTwin), target);

    PixFmt const targetTwin = to.model == ColorModel::Grey ? PixFmt::GRAY8 : GetPlanarTwin(to);
    VideoHandle const result = Make(source, target);
    if (targetTwin != target)
        MoveColour(*Convert(source, targetTwin), *result);
    else if (from.model == ColorModel::Luma && to.model == ColorModel::Luma)
        ChangeChroma(source, *result);
    else
        ChangeMatrix(source, *result);
    MoveAlpha(source, *result);
    return result;
}

void FormatConverter::ChangeChroma(IDataVideo const& source, IDataVideo& target) {
    CopyPlane(source.GetPlane(0), target.GetMutablePlane(0));
    ConstPlane const alpha = FindClearAlpha(source);
    VideoHandle const weights = alpha.IsEmpty() ? nullptr : MakeChromaMask(*pictures, alpha, source.GetDescription());
    for (unsigned char i = 1; i < 3; ++i) {
        MutablePlane const chroma = target.GetMutablePlane(i);
        GetScaler().Scale(AsGrey(source.GetPlane(i)), AsGrey(chroma), SettingsResizer::AREA);
        if (weights)
            ScaleByAlpha(*pictures, GetScaler(), {source.GetPlane(i), 1, -1, weights->GetPlane(0)}, chroma,
                         SettingsResizer::AREA);
    }
}

void FormatConverter::ChangeMatrix(IDataVideo const& source, IDataVideo& target) {
    PixFmtDescription const& to = target.GetDescription();
    FrameFormat const frame = target.GetFrameFormat();
    auto const isOneSample = [](std::uint32_t pixels, std::uint8_t shift) {
        return pixels > 1 && pixels <= 1U << shift;
    };
    // Chroma that is made or taken at another resolution counts by its alpha, which libswscale does not know of.
    bool const isWeighed = !FindClearAlpha(source).IsEmpty();
    if (isWeighed && IsSubsampled(source.GetDescription()))
        return ChangeMatrix(*Convert(source, PixFmt::YUVA444P), target);
    if (isOneSample(frame.width, to.chromaShiftX) || isOneSample(frame.height, to.chromaShiftY) ||
        (isWeighed && IsSubsampled(to)))
        return ChangeChroma(*Convert(source, isWeighed ? PixFmt::YUVA444P : PixFmt::YUV444P), target);
    scaler.Convert(SourceSide(source, WithoutAlpha(source.GetPixFmt())),
                   TargetSide(target, WithoutAlpha(target.GetPixFmt())));
}

} // namespace Velnor::Proc
