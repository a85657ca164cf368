// Sketch: a pencil drawing. The luma divided by its blurred self ("colour dodge") leaves lines where it changes;
// shadows are hatched, the paper is rough, and as much of the colour stays as is asked for.
#include "Proc/Effects/Kit/ByteTables.h"
#include "Proc/Effects/Kit/ClearColours.h"
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Effects/Lumetta/Kernels/Style/PencilRows.h"
#include "Proc/Settings/SettingsEffectBlur.h"
#include "Proc/Settings/SettingsEffectSketch.h"

#include <algorithm>

namespace Velnor::Proc {

class Sketch : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectSketch> {
public:
    Sketch(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSC(effectFactory, effectContext),
          blur(MakeOneInput(SettingsEffectBlur())),
          toGrey(MakeOneInput(SettingsColorspaceConverter(PixFmt::GRAY8, false))) {}

    bool ConvertBack() const override { return true; }

    std::vector<PixFmt> const& GetSupportedFormats() const override {
        static std::vector<PixFmt> const formats{PixFmt::GRAY8, PixFmt::YUV444P, PixFmt::YUVA444P};
        return formats;
    }

    void ProcessInternalCSC(DataHandle& data) override {
        FrameFormat const frame = AsVideo(data).GetFrameFormat();
        double const breadth = settings.GetPencil() / 100 * std::min(frame.width, frame.height);
        VideoHandle const result = AsVideo(data).MakeCopy(CopyMode::Independent);
        CoverClearPixels(*result);
        DataHandle tone = result->MakeCopy(CopyMode::Share);
        toGrey->ProcessData(tone);
        RunWith(*blur, SettingsEffectBlur(SettingsEffectBlur::GAUSSIAN).SetDevX(breadth).SetDevY(breadth), tone);

        Kernels::Pencil const pencil{settings.GetStrength() / 100, settings.GetDarkness() / 100,
                                     settings.GetHatching() / 100, settings.GetPaper() / 100, breadth};
        Kernels::DrawPencil(AsVideo(tone).GetPlane(0), result->GetMutablePlane(0), pencil);
        if (result->GetPixFmt() != PixFmt::GRAY8) ReduceColor(*result);
        data = result;
    }

private:
    /// Towards grey, as far as the drawing is seen.
    void ReduceColor(IDataVideo& picture) const {
        double const kept = 1 - settings.GetStrength() / 100 * (1 - settings.GetColor() / 100);
        Kernels::Table table{};
        for (int i = 0; i < 256; ++i)
            table[static_cast<std::size_t>(i)] = static_cast<unsigned char>(128.5 + (i - 128) * kept);
        for (unsigned char plane = 1; plane <= 2; ++plane) {
            MutablePlane const chroma = picture.GetMutablePlane(plane);
            Kernels::MapBytes(chroma, chroma, {&table, 1}, 1);
        }
    }

    intrusive_ptr<IOneInputEffectVideo> blur;
    intrusive_ptr<IOneInputEffectVideo> toGrey;
};

VELNOR_EFFECT(SettingsEffectSketch, OneInput, Sketch)

} // namespace Velnor::Proc
