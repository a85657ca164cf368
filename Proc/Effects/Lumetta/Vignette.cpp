// Vignette: a layer of one colour, laid over the picture with a shape mask as its opacity.
//
//     mask   = shape mask of the picture's frame         made anew for a new frame format or new shape settings
//     alpha  = mask at the resolution of the chroma      for a new mask or a new pixel format
//     layer  = colour, with mask and alpha as opacity    for a new mask, pixel format or colour
//     result = picture with the layer over it
//
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Effects/Kit/MaskLayer.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectAlphaInserter.h"
#include "Proc/Settings/SettingsEffectExtraAlphaExtractor.h"
#include "Proc/Settings/SettingsEffectImageBlender.h"
#include "Proc/Settings/SettingsEffectVignette.h"

namespace Velnor::Proc {

class Vignette : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectVignette> {
public:
    using EffectBaseOneInput::SetSettings;

    Vignette(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext),
          inputConverter(MakeOneInput(SettingsColorspaceConverter(
              std::vector<PixFmt>{PixFmt::GRAY8, PixFmt::ARGB, PixFmt::RGBA, PixFmt::ABGR, PixFmt::BGRA}, true))),
          shapeMask(MakeOneInput(SettingsEffectShapeMask())),
          blender(MakeTwoInput(SettingsEffectImageBlender())),
          alphaExtractor(MakeOneInput(SettingsEffectExtraAlphaExtractor(PixFmt::NONE))),
          alphaInserter(MakeTwoInput(SettingsEffectAlphaInserter())) {}

    /// The reset hook cannot tell which settings change: a mask of the same shape is kept over it.
    void SetSettings(SettingsEffectVignette const& next) override {
        DataHandle const kept = settings.GetShapeMask() == next.GetShapeMask() ? layer.mask : nullptr;
        EffectBaseOneInput::SetSettings(next);
        layer.mask = kept;
    }

    void ResetSettings() override {
        layer.mask = nullptr;
        EffectBaseOneInput::ResetSettings();
    }

    void ProcessInternal(DataHandle& data) override {
        inputConverter->ProcessData(data);
        UpdateMask(data);
        UpdateMaskAlpha(data->GetPixFmt());
        UpdateColorLayer();
        data = AsVideo(data).MakeCopy(CopyMode::Independent);
        blender->ProcessData(data, colorLayer);
    }

private:
    // Sub-effects may write in place, so they get copies, which share their samples until then. Each stage commits what
    // it made last: one that fails leaves nothing behind that the next picture would trust.

    void UpdateMask(DataHandle const& data) {
        if (layer.IsOf(data->GetFrameFormat())) return;
        colorLayer = nullptr;
        layer.Draw(*shapeMask, settings.GetShapeMask(), data);
    }

    void UpdateMaskAlpha(PixFmt format) {
        if (layer.chroma && format == layerFormat) return;
        layer.chroma = colorLayer = nullptr;
        alphaExtractor->SetSettings(SettingsEffectExtraAlphaExtractor(format));
        layer.MakeChroma(*alphaExtractor);
        layerFormat = format;
    }

    void UpdateColorLayer() {
        if (colorLayer && layerColor == settings.GetColor()) return;
        colorLayer = nullptr;
        VideoHandle const filled = context->CreateImage(layerFormat, layer.mask->GetFrameFormat());
        filled->Fill(settings.GetColor());
        DataHandle made = filled;
        alphaInserter->ProcessData(made, layer.mask);
        layer.AttachTo(AsVideo(made));
        colorLayer = made;
        layerColor = settings.GetColor();
    }

    intrusive_ptr<IOneInputEffectVideo> inputConverter;
    intrusive_ptr<IOneInputEffectVideo> shapeMask;
    intrusive_ptr<ITwoInputEffectVideo> blender;
    intrusive_ptr<IOneInputEffectVideo> alphaExtractor;
    intrusive_ptr<ITwoInputEffectVideo> alphaInserter;
    MaskLayer layer;
    DataHandle colorLayer;
    PixFmt layerFormat = PixFmt::NONE; ///< Pixel format that the layer's chroma and colorLayer are for.
    Color layerColor{0, 0, 0, 255};    ///< Colour of colorLayer.
};

VELNOR_EFFECT(SettingsEffectVignette, OneInput, Vignette)

} // namespace Velnor::Proc
