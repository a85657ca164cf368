// ExtraAlphaExtractor: brings a mask (GRAY8) to the resolution of the chroma planes of a pixel format, as extra alpha 1
// of such a picture: the mean over each chroma sample's area. Where the format has no subsampling, or none is named,
// the result is the mask itself.
#include "Proc/Effects/General/PictureAccess.h"
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Settings/SettingsEffectExtraAlphaExtractor.h"

namespace Velnor::Proc {

class ExtraAlphaExtractor : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectExtraAlphaExtractor> {
public:
    ExtraAlphaExtractor(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext, ImplNames::DEFAULT) {}

    void ProcessInternal(DataHandle& data) override {
        IDataVideo const& mask = AsVideo(data);
        if (mask.GetPixFmt() != PixFmt::GRAY8)
            VELNOR_THROW(EffectException,
                         "A mask is a picture of format gray8, not " + std::string(mask.GetDescription().name) + ".");
        if (settings.GetPixelFormat() == PixFmt::NONE) return;
        PixFmtDescription const& format = *PixFmtDescription::Find(settings.GetPixelFormat());
        if (format.chromaShiftX == 0 && format.chromaShiftY == 0) return;
        data = MakeChromaMask(*context, mask.GetPlane(0), format);
    }
};

VELNOR_EFFECT(SettingsEffectExtraAlphaExtractor, OneInput, ExtraAlphaExtractor)

} // namespace Velnor::Proc
