#include "Proc/Effects/General/PictureAccess.h"

#include "Proc/Effects/General/Kernels/ChromaMean.h"

namespace Velnor::Proc {
namespace {

std::vector<PixFmt> ListSeparate(bool withPalette) {
    std::vector<PixFmt> formats;
    for (PixFmtDescription const& format : PixFmtDescription::GetAll())
        if (!IsPackedLuma(format) && (withPalette || format.model != ColorModel::Palette))
            formats.push_back(format.format);
    return formats;
}

} // namespace

IDataVideo& OwnPicture(DataHandle& data) {
    IDataVideo& picture = AsVideo(data);
    if (data->GetRefCount() == 1) return picture;
    data = picture.MakeCopy(CopyMode::Independent);
    return AsVideo(data);
}

std::vector<PixFmt> const& SeparateFormats(bool withPalette) {
    static std::vector<PixFmt> const all = ListSeparate(true);
    static std::vector<PixFmt> const withoutPalette = ListSeparate(false);
    return withPalette ? all : withoutPalette;
}

bool IsPackedLuma(PixFmtDescription const& format) {
    return format.model == ColorModel::Luma && format.planesCount == 1;
}

VideoHandle MakeChromaMask(IEffectContext& context, ConstPlane const& mask, PixFmtDescription const& format) {
    auto const shrink = [](std::uint64_t size, unsigned int shift) {
        return static_cast<std::uint32_t>((size + (1U << shift) - 1) >> shift);
    };
    FrameFormat const frame = FrameFormat::Square(shrink(mask.GetWidth(), format.chromaShiftX),
                                                  shrink(mask.GetHeight(), format.chromaShiftY));
    VideoHandle const means = context.CreateImage(PixFmt::GRAY8, frame);
    Kernels::MeanOverChroma(mask, means->GetMutablePlane(0), format.chromaShiftX, format.chromaShiftY);
    return means;
}

} // namespace Velnor::Proc
