// OilPaint: ImageMagick's oil painting. Each pixel takes the colour of the brightness that is most frequent within the
// brush around it, as in G. J. Holzmann, "Beyond Photography" (1988). Red, green and blue go through the library as
// they are; alpha stays with the picture and never passes through it.
#include "Proc/Effects/Kit/ClearColours.h"
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Effects/Photo/MagickSupport.h"
#include "Proc/Effects/Photo/PhotoModule.h"
#include "Proc/Settings/SettingsEffectOilPaint.h"

namespace Velnor::Proc {

class MagickOilPaint : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectOilPaint> {
public:
    MagickOilPaint(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSC(effectFactory, effectContext, ImplPhotoNames::IMAGEMAGICK) {}

    bool ConvertBack() const override { return true; }
    std::vector<PixFmt> const& GetSupportedFormats() const override { return MagickSupport::GetColourFormats(); }

    void ProcessInternal(DataHandle& data) override {
        RequireRadius();
        // Before anything is converted. The library makes a second picture of the first, and only then is the first
        // given back.
        MagickSupport::RequireRoom(data->GetFrameFormat(), 2, "The oil paint effect");
        EffectBaseCSC::ProcessInternal(data);
    }

    void ProcessInternalCSC(DataHandle& data) override {
        VideoHandle const result = AsVideo(data).MakeCopy(CopyMode::Independent);
        CoverClearPixels(*result);
        MagickSupport::Run("The oil paint effect", [&] {
            Magick::Image image = MagickSupport::Import(*result);
            image.oilPaint(settings.GetRadius());
            MagickSupport::Export(image, *result);
            data = result;
        });
    }

private:
    /// The work grows with the square of the radius, and the library's kernel with it.
    static constexpr double LARGEST_RADIUS = 200;

    /// Not the field's own limit: another effect of these settings takes any radius.
    void RequireRadius() const {
        double const radius = settings.GetRadius();
        if (Accepts const accepted(0, LARGEST_RADIUS); !accepted.IsMet(radius))
            VELNOR_THROW(EffectException, Details::DescribeRefusal("radius", TextForm<double>::Print(radius), "pixels",
                                                                   Details::DescribeAccepted(accepted, false)));
    }
};

} // namespace Velnor::Proc

Velnor::Proc::EffectFactoryFunction FindVelnorEffect(char const* classId) {
    using namespace Velnor::Proc;
    return classId == SettingsEffectOilPaint::CLASS_ID ? &MakeEffect<MagickOilPaint> : nullptr;
}
