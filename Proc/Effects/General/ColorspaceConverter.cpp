// Colour-space converter: the picture in the accepted format that loses least of it.
//
#include "Proc/Effects/General/FormatChoice.h"
#include "Proc/Effects/General/FormatConverter.h"
#include "Proc/Effects/General/RegisterGeneralEffects.h"
#include "Proc/Effects/Lumetta/EffectBase.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"

#include <algorithm>
#include <string>
#include <vector>

namespace Velnor::Proc {
namespace {

/// Extra alpha at the resolution of the chroma planes: the mean over each chroma sample's area.
std::vector<unsigned char> ShrinkToChroma(ConstPlane const& mask, FrameFormat const& frame, std::uint64_t across,
                                          std::uint64_t down) {
    std::vector<unsigned char> means;
    for (std::uint64_t top = 0; top < frame.height; top += down)
        for (std::uint64_t left = 0; left < frame.width; left += across) {
            std::uint64_t const right = std::min<std::uint64_t>(left + across, frame.width);
            std::uint64_t const bottom = std::min<std::uint64_t>(top + down, frame.height);
            std::uint64_t sum = 0;
            for (std::uint64_t y = top; y < bottom; ++y)
                for (std::uint64_t x = left; x < right; ++x) sum += mask.GetRow(y)[x];
            std::uint64_t const area = (right - left) * (bottom - top);
            means.push_back(static_cast<unsigned char>((sum + area / 2) / area));
        }
    return means;
}

/// The chroma plane of extra alpha keeps its samples where the chroma resolution stays; else it is made anew from the
/// full plane, and dropped when there is none.
void CarryExtraAlpha(IDataVideo const& source, IDataVideo& target) {
    ConstPlane const full = source.GetExtraAlpha(0);
    ConstPlane const chroma = source.GetExtraAlpha(1);
    if (!full.IsEmpty()) target.SetPlane(0, full);
    if (chroma.IsEmpty()) return;
    PixFmtDescription const& from = source.GetDescription();
    PixFmtDescription const& to = target.GetDescription();
    if (from.chromaShiftX == to.chromaShiftX && from.chromaShiftY == to.chromaShiftY) {
        target.SetPlane(1, chroma);
    } else if (!full.IsEmpty()) {
        FrameFormat const frame = source.GetFrameFormat();
        auto const across = std::uint64_t{1} << to.chromaShiftX;
        auto const down = std::uint64_t{1} << to.chromaShiftY;
        std::vector<unsigned char> const means = ShrinkToChroma(full, frame, across, down);
        std::uint64_t const width = (frame.width + across - 1) / across;
        target.SetPlane(1, {means.data(), static_cast<std::int64_t>(width), width, means.size() / width});
    }
}

} // namespace

class ColorspaceConverter : public EffectBaseOneInput<IOneInputEffectVideo, SettingsColorspaceConverter> {
public:
    ColorspaceConverter(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext, ImplNames::DEFAULT), converter(effectContext) {}

    void ProcessInternal(intrusive_ptr<IData>& data) override {
        IDataVideo& picture = AsVideo(data);
        std::vector<PixFmt> const accepted = settings.GetFormats();
        PixFmt const format = ChooseFormat(picture.GetPixFmt(), accepted);
        if (format == PixFmt::NONE) ThrowUnknown(picture, accepted);
        if (format == picture.GetPixFmt()) {
            if (!settings.IsKeepExtras()) picture.DropExtraAlpha();
            return;
        }
        VideoHandle const result = converter.Convert(picture, format);
        if (settings.IsKeepExtras()) {
            result->CopyAttributes(picture);
            CarryExtraAlpha(picture, *result);
        }
        data = result;
    }

private:
    [[noreturn]] static void ThrowUnknown(IDataVideo const& picture, std::vector<PixFmt> const& accepted) {
        std::string codes;
        for (PixFmt const format : accepted)
            codes += (codes.empty() ? "" : ", ") + std::to_string(static_cast<int>(format));
        VELNOR_THROW(ProcException, "A picture of format " + std::string(picture.GetDescription().name) +
                                        " cannot be converted: none of the accepted formats (" + codes + ") is known.");
    }

    FormatConverter converter;
};

intrusive_ptr<IEffect> CreateColorspaceConverter(FactoryHandle const& factory, ContextHandle const& context) {
    return MakeEffect<ColorspaceConverter>(factory, context);
}

} // namespace Velnor::Proc
