// EdgeRemove: cleans the fringe of a cut-out, where the object's colour is mixed with that of its old background.
//
//     sure    = the mask's opaque part, without its outermost pixels
//     colour  = the picture's where sure; elsewhere continued from there, by pull-push interpolation
//     opacity = the mask, narrower and softer as the settings say
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Effects/Kit/PullPush.h"
#include "Proc/Effects/Kit/RequirePictures.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectAlphaExtractor.h"
#include "Proc/Settings/SettingsEffectBlur.h"
#include "Proc/Settings/SettingsEffectEdgeRemove.h"
#include "Proc/Settings/SettingsEffectMorphology.h"

#include <cmath>
#include <string>

namespace Velnor::Proc {
namespace {

/// From opacities to weights of the colours: what lets any background through counts less, and soon nothing.
void KeepTheSure(MutablePlane const& mask) {
    constexpr int CLEAR = 240;
    for (std::uint64_t y = 0; y < mask.GetHeight(); ++y) {
        unsigned char* const row = mask.GetRow(y);
        for (std::uint64_t x = 0; x < mask.GetWidth(); ++x)
            row[x] = static_cast<unsigned char>(row[x] > CLEAR ? (row[x] - CLEAR) * 255 / (255 - CLEAR) : 0);
    }
}

void MixColors(ConstPlane const& clean, MutablePlane const& picture, int share) {
    for (std::uint64_t y = 0; y < picture.GetHeight(); ++y) {
        unsigned char const* const from = clean.GetRow(y);
        unsigned char* const to = picture.GetRow(y);
        for (std::uint64_t x = 0; x < picture.GetWidth(); ++x)
            to[x] = static_cast<unsigned char>((share * from[x] + (256 - share) * to[x] + 128) >> 8);
    }
}

void WriteOpacity(ConstPlane const& mask, MutablePlane const& picture) {
    for (std::uint64_t y = 0; y < picture.GetHeight(); ++y) {
        unsigned char const* const from = mask.GetRow(y);
        unsigned char* const to = picture.GetRow(y) + 3;
        for (std::uint64_t x = 0; x < mask.GetWidth(); ++x) to[4 * x] = from[x];
    }
}

} // namespace

class EdgeRemove : public EffectBaseVarInput<IVarInputEffectVideo, SettingsEffectEdgeRemove> {
public:
    EdgeRemove(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseVarInput(effectFactory, effectContext),
          toRgba(MakeOneInput(SettingsColorspaceConverter(PixFmt::RGBA, false))),
          toGrey(MakeOneInput(SettingsColorspaceConverter(PixFmt::GRAY8, false))),
          alphaExtractor(MakeOneInput(SettingsEffectAlphaExtractor())),
          erosion(MakeOneInput(SettingsEffectMorphology())),
          blur(MakeOneInput(SettingsEffectBlur())) {}

    DataHandle ProcessInternal(std::vector<DataHandle> const& inputs) override {
        RequireInputs(inputs);
        DataHandle mask = MakeMask(inputs);
        DataHandle work = AsVideo(inputs[0]).MakeCopy(CopyMode::Share);
        toRgba->ProcessData(work);
        VideoHandle const result = AsVideo(work).MakeCopy(CopyMode::Independent);
        work.reset();
        if (settings.GetStrength() > 0) CleanColors(*result, mask);
        Erode(mask, settings.GetErosion());
        Soften(mask);
        WriteOpacity(AsVideo(mask).GetPlane(0), result->GetMutablePlane(0));
        result->DropExtraAlpha();
        result->CopyAttributes(*inputs[0]);
        return result;
    }

private:
    static void RequireInputs(std::vector<DataHandle> const& inputs) {
        if (inputs.empty() || inputs.size() > 2)
            VELNOR_THROW(EffectException, "A picture and its mask are needed, " + std::to_string(inputs.size()) +
                                              " pictures are given.");
        for (auto const& input : inputs) RequirePicture(input.get());
        if (inputs.size() == 1) return;
        RequireOneSize("The mask is", inputs[1]->GetFrameFormat(), inputs[0]->GetFrameFormat());
    }

    /// The second picture, or the opacity of one that was cut out before.
    DataHandle MakeMask(std::vector<DataHandle> const& inputs) const {
        DataHandle mask = AsVideo(inputs.back()).MakeCopy(CopyMode::Share);
        if (inputs.size() == 2) {
            toGrey->ProcessData(mask);
            return mask;
        }
        alphaExtractor->ProcessData(mask);
        if (mask == nullptr)
            VELNOR_THROW(EffectException,
                         "A mask is needed: there is no second picture, and the first, of the format " +
                             std::string(inputs[0]->GetDescription().name) + ", has no alpha.");
        return mask;
    }

    void CleanColors(IDataVideo& picture, DataHandle const& mask) const {
        DataHandle sure = AsVideo(mask).MakeCopy(CopyMode::Share);
        Erode(sure, settings.GetFringe());
        sure = AsVideo(sure).MakeCopy(CopyMode::Independent);
        KeepTheSure(AsVideo(sure).GetMutablePlane(0));
        VideoHandle const clean = picture.MakeCopy(CopyMode::Independent);
        Kernels::FillHoles(clean->GetMutablePlane(0), 4, AsVideo(sure).GetPlane(0));
        MixColors(clean->GetPlane(0), picture.GetMutablePlane(0),
                  static_cast<int>(std::lround(settings.GetStrength() * 2.56)));
    }

    void Erode(DataHandle& mask, int radius) const {
        if (radius == 0) return;
        RunWith(*erosion, SettingsEffectMorphology(SettingsEffectMorphology::ERODE, radius), mask);
    }

    void Soften(DataHandle& mask) const {
        if (settings.GetFeather() == 0) return;
        RunWith(*blur,
                SettingsEffectBlur(SettingsEffectBlur::GAUSSIAN)
                    .SetDevX(settings.GetFeather())
                    .SetDevY(settings.GetFeather()),
                mask);
    }

    intrusive_ptr<IOneInputEffectVideo> toRgba;
    intrusive_ptr<IOneInputEffectVideo> toGrey;
    intrusive_ptr<IOneInputEffectVideo> alphaExtractor;
    intrusive_ptr<IOneInputEffectVideo> erosion;
    intrusive_ptr<IOneInputEffectVideo> blur;
};

VELNOR_EFFECT(SettingsEffectEdgeRemove, VarInput, EdgeRemove)

} // namespace Velnor::Proc
