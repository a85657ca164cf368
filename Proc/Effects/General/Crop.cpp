// Crop: cuts margins off the picture.
//
// The result is a view: no sample is touched. A picture can begin only at a whole chroma sample: the left and the upper
// margin are rounded up to that, the right and the lower one are exact.
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Settings/SettingsEffectCrop.h"

namespace Velnor::Proc {

class Crop : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectCrop> {
public:
    Crop(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext, ImplNames::DEFAULT) {}

    /// Extra alpha is dropped: it belongs to the pixels that were.
    void ProcessInternal(intrusive_ptr<IData>& data) override {
        IDataVideo const& picture = AsVideo(data);
        PixFmtDescription const& format = picture.GetDescription();
        FrameFormat const frame = picture.GetFrameFormat();
        CropInfo const& given = settings.GetMargins();
        CropInfo const before =
            CropInfo(given.GetLeft(), given.GetTop(), 0, 0).Apart(1U << format.chromaShiftX, 1U << format.chromaShiftY);
        VideoHandle const result = picture.MakePart({before.GetLeft(), before.GetTop(),
                                                     Rest("wide", frame.width, before.GetLeft(), given.GetRight()),
                                                     Rest("high", frame.height, before.GetTop(), given.GetBottom())});
        result->DropExtraAlpha();
        data = result;
    }

private:
    static std::uint32_t Rest(std::string const& what, std::uint32_t size, std::uint64_t before, std::uint64_t after) {
        if (before + after < size) return static_cast<std::uint32_t>(size - before - after);
        VELNOR_THROW(EffectException, "The margins of the crop, " + std::to_string(before) + " and " +
                                          std::to_string(after) + " pixels, leave nothing of a picture " +
                                          std::to_string(size) + " pixels " + what + ".");
    }
};

VELNOR_EFFECT(SettingsEffectCrop, OneInput, Crop)

} // namespace Velnor::Proc
