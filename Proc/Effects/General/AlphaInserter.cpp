// AlphaInserter: makes the second picture, a mask (GRAY8) of the same size, the opacity of the first. The mask is
// written into the first's own alpha where its format has one, and attached as extra alpha: index 0 as it is, index 1
// at the resolution of the chroma. A palette has no place for an alpha of each pixel: such a picture becomes RGBA.
#include "Proc/Effects/General/PictureAccess.h"
#include "Proc/Effects/Kit/Converter.h"
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Settings/SettingsEffectAlphaInserter.h"

namespace Velnor::Proc {
namespace {

std::string DescribePicture(IDataVideo const& picture) {
    return SizeText(picture.GetFrameFormat()) + " pixels of format " + std::string(picture.GetDescription().name);
}

void RequireMask(IDataVideo const& picture, IDataVideo const& mask) {
    if (mask.GetPixFmt() != PixFmt::GRAY8 || !IsSameSize(picture.GetFrameFormat(), mask.GetFrameFormat()))
        VELNOR_THROW(EffectException, "A picture of " + DescribePicture(picture) +
                                          " takes a mask of the same size and format gray8, not " +
                                          DescribePicture(mask) + ".");
}

void WriteAlpha(ConstPlane const& mask, MutablePlane const& plane, std::uint64_t offset, std::uint64_t step) {
    for (std::uint64_t y = 0; y < mask.GetHeight(); ++y) {
        unsigned char const* const from = mask.GetRow(y);
        unsigned char* const to = plane.GetRow(y) + offset;
        for (std::uint64_t x = 0; x < mask.GetWidth(); ++x) to[x * step] = from[x];
    }
}

} // namespace

class AlphaInserter : public EffectBaseTwoInput<ITwoInputEffectVideo, SettingsEffectAlphaInserter> {
public:
    AlphaInserter(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseTwoInput(effectFactory, effectContext, ImplNames::DEFAULT) {}

    void ProcessInternal(DataHandle& first, ConstDataHandle const& second) override {
        IDataVideo const& mask = AsVideo(second);
        RequireMask(AsVideo(first), mask);
        ConstPlane const opacity = mask.GetPlane(0);
        if (AsVideo(first).GetDescription().model == ColorModel::Palette)
            first = converter.Convert(AsVideo(first), PixFmt::RGBA);
        PixFmtDescription const& format = AsVideo(first).GetDescription();
        VideoHandle const chroma = MakeChromaMask(*context, opacity, format);
        IDataVideo& picture = ReplacePicture(first, [&](IDataVideo& copy) {
            copy.SetPlane(0, opacity);
            copy.SetPlane(1, chroma->GetPlane(0));
        });
        if (format.hasAlpha)
            WriteAlpha(opacity, picture.GetMutablePlane(format.alpha.plane), format.alpha.offset,
                       format.planes[format.alpha.plane].bytes);
    }

private:
    Converter converter{factory};
};

VELNOR_EFFECT(SettingsEffectAlphaInserter, TwoInput, AlphaInserter)

} // namespace Velnor::Proc
