// DetailsEnhance: the luma is taken apart into a base and two layers of detail by edge-preserving smoothing of two
// widths (as Z. Farbman et al., "Edge-Preserving Decompositions for Multi-Scale Tone and Detail Manipulation", SIGGRAPH
// 2008, with a guided filter for the smoothing), and the layers are added once more:
//
//     luma + fine * (luma - narrow) + coarse * (narrow - wide)
//
// Edges are in the base, so they get no halo.
#include "Proc/Effects/Kit/ClearColours.h"
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Settings/SettingsEffectDetailsEnhance.h"
#include "Proc/Settings/SettingsEffectSmartBlur.h"

#include <algorithm>

namespace Velnor::Proc {
namespace {

/// Percentages of detail; rounded to the nearest level.
struct Gains {
    int fine;
    int coarse;
};

void AddDetail(ConstPlane const& narrow, ConstPlane const& wide, MutablePlane const& luma, Gains const& gains) {
    for (std::uint64_t y = 0; y < luma.GetHeight(); ++y) {
        unsigned char const* const n = narrow.GetRow(y);
        unsigned char const* const w = wide.GetRow(y);
        unsigned char* const to = luma.GetRow(y);
        for (std::uint64_t x = 0; x < luma.GetWidth(); ++x) {
            int const sum = to[x] * 100 + gains.fine * (to[x] - n[x]) + gains.coarse * (n[x] - w[x]);
            to[x] = static_cast<unsigned char>((std::clamp(sum, 0, 25500) + 50) / 100);
        }
    }
}

} // namespace

class DetailsEnhance : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectDetailsEnhance> {
public:
    DetailsEnhance(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSC(effectFactory, effectContext),
          smoother(MakeOneInput(SettingsEffectSmartBlur())),
          toGrey(MakeOneInput(SettingsColorspaceConverter(PixFmt::GRAY8, false))) {}

    bool ConvertBack() const override { return true; }

    std::vector<PixFmt> const& GetSupportedFormats() const override {
        static std::vector<PixFmt> const formats{PixFmt::GRAY8,    PixFmt::YUV444P, PixFmt::YUV422P, PixFmt::YUV420P,
                                                 PixFmt::YUV411P,  PixFmt::YUV410P, PixFmt::YUV440P, PixFmt::YUVA420P,
                                                 PixFmt::YUVA422P, PixFmt::YUVA444P};
        return formats;
    }

    void ProcessInternalCSC(DataHandle& data) override {
        VideoHandle const result = AsVideo(data).MakeCopy(CopyMode::Independent);
        CoverClearPixels(*result);
        DataHandle luma = result->MakeCopy(CopyMode::Share);
        toGrey->ProcessData(luma);
        DataHandle const narrow = Smooth(luma, NARROW_RADIUS);
        DataHandle const wide = Smooth(luma, WIDE_RADIUS);
        luma.reset();
        AddDetail(Read(narrow), Read(wide), result->GetMutablePlane(0), {settings.GetFine(), settings.GetCoarse()});
        data = result;
    }

private:
    static constexpr int NARROW_RADIUS = 12; ///< Percent of the smoother's.
    static constexpr int WIDE_RADIUS = 80;

    static ConstPlane Read(DataHandle const& picture) { return AsVideo(picture).GetPlane(0); }

    DataHandle Smooth(DataHandle const& luma, int radius) {
        smoother->SetSettings(SettingsEffectSmartBlur().SetLumaRadius(radius).SetLumaBlur(settings.GetEdges()));
        DataHandle smooth = AsVideo(luma).MakeCopy(CopyMode::Share);
        smoother->ProcessData(smooth);
        return smooth;
    }

    intrusive_ptr<IOneInputEffectVideo> smoother;
    intrusive_ptr<IOneInputEffectVideo> toGrey;
};

VELNOR_EFFECT(SettingsEffectDetailsEnhance, OneInput, DetailsEnhance)

} // namespace Velnor::Proc
