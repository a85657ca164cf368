// Flip: mirrors the picture. Samples change places and none is changed.
//
// Each plane is mirrored in itself. Luma interleaved with chroma is taken apart first, and put together again.
#include "Proc/Effects/General/PictureAccess.h"
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Settings/SettingsEffectFlip.h"

#include <cstring>

namespace Velnor::Proc {
namespace {

/// Samples of `bytes` each, in the other order.
void MirrorRow(unsigned char const* from, unsigned char* to, std::uint64_t samples, std::uint64_t bytes) {
    for (std::uint64_t x = 0; x < samples; ++x) std::memcpy(to + x * bytes, from + (samples - 1 - x) * bytes, bytes);
}

void MirrorPlane(ConstPlane const& source, MutablePlane const& target, std::uint64_t bytes,
                 SettingsEffectFlip::Direction direction) {
    std::uint64_t const height = target.GetHeight();
    for (std::uint64_t y = 0; y < height; ++y) {
        unsigned char const* const from =
            source.GetRow(direction == SettingsEffectFlip::HORIZONTAL ? y : height - 1 - y);
        if (direction == SettingsEffectFlip::VERTICAL)
            std::memcpy(target.GetRow(y), from, target.GetWidth());
        else
            MirrorRow(from, target.GetRow(y), target.GetWidth() / bytes, bytes);
    }
}

} // namespace

class Flip : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectFlip> {
public:
    Flip(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSC(effectFactory, effectContext, ImplNames::DEFAULT) {}

    bool ConvertBack() const override { return true; }
    std::vector<PixFmt> const& GetSupportedFormats() const override { return StandInFormats(); }

    void ProcessInternal(DataHandle& data) override {
        if (IsPackedLuma(data->GetDescription()))
            EffectBaseCSC::ProcessInternal(data);
        else
            ProcessInternalCSC(data);
    }

    void ProcessInternalCSC(DataHandle& data) override {
        IDataVideo const& picture = AsVideo(data);
        PixFmtDescription const& format = picture.GetDescription();
        VideoHandle const result = context->CreateImage(format.format, picture.GetFrameFormat());
        bool const hasPalette = format.model == ColorModel::Palette;
        for (unsigned char i = 0; i < (hasPalette ? 1 : format.planesCount); ++i)
            MirrorPlane(picture.GetPlane(i), result->GetMutablePlane(i), format.planes[i].bytes,
                        settings.GetDirection());
        if (hasPalette)
            std::memcpy(result->GetMutablePlane(1).GetRow(0), picture.GetPlane(1).GetRow(0),
                        picture.GetPlane(1).GetWidth());
        result->CopyAttributes(*data);
        data = result;
    }
};

VELNOR_EFFECT(SettingsEffectFlip, OneInput, Flip)

} // namespace Velnor::Proc
