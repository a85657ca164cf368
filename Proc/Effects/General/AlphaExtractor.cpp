// AlphaExtractor: the picture's own alpha as a grey picture (GRAY8). Null where the format has none; extra alpha is not
// the picture's own.
#include "Proc/Effects/Kit/ByteTables.h"
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Settings/SettingsEffectAlphaExtractor.h"

namespace Velnor::Proc {
namespace {

/// The opacity of each entry of a palette.
Kernels::Table OpacityTable(ConstPlane const& palette) {
    Kernels::Table table{};
    for (std::size_t i = 0; i < table.size(); ++i) table[i] = palette.GetRow(0)[i * 4 + 3];
    return table;
}

void GatherAlpha(ConstPlane const& plane, std::uint64_t offset, std::uint64_t step, MutablePlane const& target) {
    for (std::uint64_t y = 0; y < target.GetHeight(); ++y) {
        unsigned char const* const from = plane.GetRow(y) + offset;
        unsigned char* const to = target.GetRow(y);
        for (std::uint64_t x = 0; x < target.GetWidth(); ++x) to[x] = from[x * step];
    }
}

} // namespace

class AlphaExtractor : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectAlphaExtractor> {
public:
    AlphaExtractor(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext, ImplNames::DEFAULT) {}

    void ProcessInternal(DataHandle& data) override {
        IDataVideo const& picture = AsVideo(data);
        PixFmtDescription const& format = picture.GetDescription();
        if (!format.hasAlpha) {
            data = nullptr;
            return;
        }
        VideoHandle const alpha = context->CreateImage(PixFmt::GRAY8, picture.GetFrameFormat());
        MutablePlane const target = alpha->GetMutablePlane(0);
        if (format.model == ColorModel::Palette) {
            Kernels::Table const opacity = OpacityTable(picture.GetPlane(1));
            Kernels::MapBytes(picture.GetPlane(0), target, {&opacity, 1}, 1);
        } else {
            ComponentPlace const place = format.alpha;
            GatherAlpha(picture.GetPlane(place.plane), place.offset, format.planes[place.plane].bytes, target);
        }
        data = alpha;
    }
};

VELNOR_EFFECT(SettingsEffectAlphaExtractor, OneInput, AlphaExtractor)

} // namespace Velnor::Proc
