// GradientPosterize: flattens the colours into a few, and keeps the brightness.
//
//     classes = posterize(copy of the picture)         class number of every pixel, by luma
//     chroma  = mean chroma of the class of the pixel at the sample's upper left
//
// The sums behind the means are of 32 bits (see Kernels::ChromaSum).
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Effects/Lumetta/Kernels/Color/ChromaClasses.h"
#include "Proc/Settings/SettingsEffectGradientPosterize.h"
#include "Proc/Settings/SettingsEffectPosterize.h"

#include <vector>

namespace Velnor::Proc {

class GradientPosterize : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectGradientPosterize> {
public:
    GradientPosterize(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSC(effectFactory, effectContext), posterize(MakeOneInput(ClassesOf(settings))) {}

    using EffectBaseCSC::SetSettings;

    void SetSettings(SettingsEffectGradientPosterize const& next) override {
        posterize->SetSettings(ClassesOf(next));
        EffectBaseCSC::SetSettings(next);
    }

    bool ConvertBack() const override { return true; }

    std::vector<PixFmt> const& GetSupportedFormats() const override {
        static std::vector<PixFmt> const formats{PixFmt::YUVA444P, PixFmt::YUVA422P, PixFmt::YUVA420P, PixFmt::YUV444P,
                                                 PixFmt::YUV440P,  PixFmt::YUV422P,  PixFmt::YUV420P,  PixFmt::YUV411P,
                                                 PixFmt::YUV410P,  PixFmt::YUVJ420P, PixFmt::YUVJ422P, PixFmt::YUVJ444P,
                                                 PixFmt::YUVJ440P, PixFmt::YUVJ411P};
        return formats;
    }

    void ProcessInternalCSC(DataHandle& data) override {
        // A copy, which costs nothing until it is written: a posterize effect that works in place must not touch the
        // picture itself.
        DataHandle const palette = Classify(AsVideo(data).MakeCopy(CopyMode::Value));
        IDataVideo& picture = AsVideo(data);
        if (palette->GetPixFmt() != PixFmt::PAL8 || palette->GetFrameFormat() != picture.GetFrameFormat())
            VELNOR_THROW(EffectException, "The posterize effect gave a picture of another kind than the palette "
                                          "picture of the input's size that was asked for.");
        PixFmtDescription const& format = picture.GetDescription();
        Kernels::ChromaClasses const planes{AsVideo(palette).GetPlane(0), picture.GetMutablePlane(1),
                                            picture.GetMutablePlane(2), format.chromaShiftX, format.chromaShiftY};
        std::vector<Kernels::ChromaSum> sums(settings.GetColorCount());
        Kernels::AddChroma(planes, sums);
        Kernels::DivideChroma(sums);
        Kernels::WriteChroma(planes, sums);
    }

private:
    static SettingsEffectPosterize ClassesOf(SettingsEffectGradientPosterize const& gradient) {
        return SettingsEffectPosterize().SetColorsNumber(gradient.GetColorCount()).SetIsPal(true);
    }

    DataHandle Classify(DataHandle data) const {
        posterize->ProcessData(data);
        RequirePicture(data.get());
        return data;
    }

    intrusive_ptr<IOneInputEffectVideo> posterize;
};

VELNOR_EFFECT(SettingsEffectGradientPosterize, OneInput, GradientPosterize)

} // namespace Velnor::Proc
