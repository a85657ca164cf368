// ShapeMask: replaces the picture by a grey mask of its size, in the form of a shape.
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Effects/Lumetta/Kernels/Shapes/DrawShape.h"
#include "Proc/Settings/SettingsEffectShapeMask.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Velnor::Proc {
namespace {

using Shape = SettingsEffectShapeMask::Shape;

unsigned char ToLevel(int value) { return static_cast<unsigned char>(std::clamp(value, 0, 255)); }

void RequireNumber(std::string const& name, double value, double least) {
    if (std::isfinite(value) && value >= least) return;
    VELNOR_THROW(EffectException, "The " + name + " of the shape mask is " + std::to_string(value) +
                                      "; it must be a finite number" + (least == 0 ? ", 0 or more." : "."));
}

void RequireSettings(SettingsEffectShapeMask const& settings) {
    constexpr double ANY = -std::numeric_limits<double>::max();
    RequireNumber("centre's x", settings.GetCenterX(), ANY);
    RequireNumber("centre's y", settings.GetCenterY(), ANY);
    RequireNumber("width", settings.GetWidth(), 0);
    RequireNumber("height", settings.GetHeight(), 0);
    RequireNumber("rotation", settings.GetRotation(), ANY);
    RequireNumber("corner radius", settings.GetCornerRadius(), 0);
    RequireNumber("feather", settings.GetFeather(), 0);
    int const shape = settings.GetShape();
    if (shape < Shape::ELLIPSE || shape > Shape::POLYGON)
        VELNOR_THROW(EffectException, "The shape of the shape mask is " + std::to_string(shape) +
                                          "; there are 0 (ellipse), 1 (rectangle), 2 (band) and 3 (polygon).");
    if (shape == Shape::POLYGON && (settings.GetSides() < 3 || settings.GetSides() > 24))
        VELNOR_THROW(EffectException, "The polygon of the shape mask has " + std::to_string(settings.GetSides()) +
                                          " sides; 3 to 24 are possible.");
}

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

    void ProcessInternal(intrusive_ptr<IData>& data) override {
        RequireSettings(settings);
        FrameFormat const frame = AsVideo(data).GetFrameFormat();
        VideoHandle const mask = context->CreateImage(PixFmt::GRAY8, frame);
        Kernels::DrawShape(mask->GetMutablePlane(0), MakeShape(settings, frame));
        data = mask;
    }
};

VELNOR_EFFECT(SettingsEffectShapeMask, OneInput, ShapeMask)

} // namespace Velnor::Proc
