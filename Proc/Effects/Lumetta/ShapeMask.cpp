// ShapeMask: replaces the picture by a grey mask of its size, in the form of a shape.
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Effects/Lumetta/Kernels/Shapes/DrawShape.h"
#include "Proc/Settings/SettingsEffectShapeMask.h"

#include <algorithm>
#include <numbers>

namespace Velnor::Proc {
namespace {

using Shape = SettingsEffectShapeMask::Shape;

unsigned char ToLevel(int value) { return static_cast<unsigned char>(std::clamp(value, 0, 255)); }

Kernels::MaskShape MakeShape(SettingsEffectShapeMask const& settings, FrameFormat const& frame) {
    constexpr Kernels::Outline OUTLINES[] = {Kernels::Outline::Ellipse, Kernels::Outline::Rectangle,
                                             Kernels::Outline::Band, Kernels::Outline::Polygon};
    Kernels::MaskShape shape;
    shape.outline = OUTLINES[settings.GetShape()];
    shape.centreX = settings.GetCenterX() / 100 * frame.width;
    shape.centreY = settings.GetCenterY() / 100 * frame.height;
    shape.halfWidth = settings.GetWidth() / 200 * frame.width;
    shape.halfHeight = settings.GetHeight() / 200 * frame.height;
    shape.angle = settings.GetRotation() / 180 * std::numbers::pi;
    shape.corner = std::min(settings.GetCornerRadius() / 100, 1.0);
    shape.sides = settings.GetSides();
    shape.feather = std::min(settings.GetFeather() / 100, 1.0);
    shape.inside = ToLevel(settings.GetForeground());
    shape.outside = ToLevel(settings.GetBackground());
    return shape;
}

} // namespace

class ShapeMask : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectShapeMask> {
public:
    using EffectBaseOneInput::EffectBaseOneInput;

    void ProcessInternal(DataHandle& data) override {
        FrameFormat const frame = AsVideo(data).GetFrameFormat();
        VideoHandle const mask = context->CreateImage(PixFmt::GRAY8, frame);
        Kernels::DrawShape(mask->GetMutablePlane(0), MakeShape(settings, frame));
        data = mask;
    }
};

VELNOR_EFFECT(SettingsEffectShapeMask, OneInput, ShapeMask)

} // namespace Velnor::Proc
