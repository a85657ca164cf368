// Vibrance: raises weak saturation more than strong.
//
//     c + (c - luma) * strength / 100 * (1 - colourfulness / 255)
//
// Extrapolation from the grey of the same luma changes saturation alone (P. Haeberli and D. Voorhies, "Image Processing
// by Linear Interpolation and Extrapolation", IRIS Universe 28, 1994). Colourfulness is the largest less the smallest
// component, the chroma of the hexcone model (A. R. Smith, "Color Gamut Transform Pairs", SIGGRAPH 1978): pure colours
// stay, greys have nothing to be extrapolated. Strengths beyond -100 to 100 are taken as the nearer of the two.
#include "Proc/Effects/General/Kernels/ColorRows.h"
#include "Proc/Effects/General/PictureAccess.h"
#include "Proc/Effects/Kit/EffectBaseCSC.h"
#include "Proc/Settings/SettingsEffectVibrance.h"

#include <algorithm>

namespace Velnor::Proc {

class Vibrance : public EffectBaseCSC<IOneInputEffectVideo, SettingsEffectVibrance> {
public:
    Vibrance(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSC(effectFactory, effectContext, ImplNames::DEFAULT) {}

    bool ConvertBack() const override { return true; }
    std::vector<PixFmt> const& GetSupportedFormats() const override { return Kernels::PackedRgbFormats(); }

    void ProcessInternalCSC(DataHandle& data) override {
        IDataVideo& picture = OwnPicture(data);
        Kernels::ApplyVibrance(picture.GetMutablePlane(0), Kernels::PackedRgb(picture.GetPixFmt()),
                               std::clamp(settings.GetStrength(), -100, 100));
    }
};

VELNOR_EFFECT(SettingsEffectVibrance, OneInput, Vibrance)

} // namespace Velnor::Proc
