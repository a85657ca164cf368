#include "Proc/Effects/General/PictureAccess.h"

#include "Proc/Effects/General/Kernels/ChromaMean.h"

namespace Velnor::Proc {

std::vector<PixFmt> const& StandInFormats() {
    static std::vector<PixFmt> const formats{PixFmt::YUV411P, PixFmt::YUV422P, PixFmt::RGBA};
    return formats;
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
