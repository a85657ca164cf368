// Colour-space converter: the picture in the accepted format that loses least of it.
//
#include "Proc/Effects/General/FormatChoice.h"
#include "Proc/Effects/General/FormatConverter.h"
#include "Proc/Effects/General/PictureAccess.h"
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"

#include <string>
#include <vector>

namespace Velnor::Proc {
namespace {

/// The chroma plane of extra alpha keeps its samples where the chroma resolution stays; else it is made anew from the
/// full plane, and dropped when there is none.
void CarryExtraAlpha(IEffectContext& context, IDataVideo const& source, IDataVideo& target) {
    ConstPlane const full = source.GetExtraAlpha(0);
    ConstPlane const chroma = source.GetExtraAlpha(1);
    if (!full.IsEmpty()) target.SetPlane(0, full);
    if (chroma.IsEmpty()) return;
    PixFmtDescription const& from = source.GetDescription();
    PixFmtDescription const& to = target.GetDescription();
    if (from.chromaShiftX == to.chromaShiftX && from.chromaShiftY == to.chromaShiftY) {
        target.SetPlane(1, chroma);
    } else if (!full.IsEmpty()) {
        VideoHandle const means = MakeChromaMask(context, full, to);
        target.SetPlane(1, means->GetPlane(0));
    }
}

} // namespace

class ColorspaceConverter : public EffectBaseOneInput<IOneInputEffectVideo, SettingsColorspaceConverter> {
public:
    ColorspaceConverter(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext, ImplNames::DEFAULT), converter(effectContext) {}

    void ProcessInternal(DataHandle& data) override {
        IDataVideo& picture = AsVideo(data);
        std::vector<PixFmt> const accepted = settings.GetFormats();
        PixFmt const format = ChooseFormat(picture.GetPixFmt(), accepted);
        if (format == PixFmt::NONE) ThrowUnknown(picture, accepted);
        if (format == picture.GetPixFmt()) {
            if (!settings.IsKeepExtras()) picture.DropExtraAlpha();
            return;
        }
        // Red-first and blue-first take turns in many chains: where nobody else holds the picture, it needs no second
        // one.
        if (IsAlone(data) && !picture.IsShared() && FormatConverter::ConvertInPlace(picture, format)) {
            if (!settings.IsKeepExtras()) picture.DropExtraAlpha();
            return;
        }
        VideoHandle const result = converter.Convert(picture, format);
        if (settings.IsKeepExtras()) {
            result->CopyAttributes(picture);
            CarryExtraAlpha(*context, picture, *result);
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

VELNOR_EFFECT(SettingsColorspaceConverter, OneInput, ColorspaceConverter)

} // namespace Velnor::Proc
