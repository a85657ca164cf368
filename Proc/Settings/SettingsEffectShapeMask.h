#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the shape mask. Places and sizes are relative to the frame, so that one mask fits every picture.
/// The feather is a part of the way from the outline to the centre: of the radius of an ellipse or a polygon in each
/// direction, of half the shorter side of a rectangle, of half the height of a band. What lies deeper is the foreground
/// value exactly; corners of the outline are at least as round as the feather is wide. A feather or a corner radius
/// above 100 % is taken as 100 %, values beyond 0 and 255 as the nearer of the two.
class VELNOR_API SettingsEffectShapeMask final : public SettingsOf<SettingsEffectShapeMask> {
public:
    enum Shape : int {
        ELLIPSE = 0,
        RECTANGLE = 1,
        BAND = 2,    ///< Across the whole frame, Height high, turned by Rotation.
        POLYGON = 3, ///< Regular, inscribed in the ellipse.
    };

    VELNOR_SETTINGS(SettingsEffectShapeMask, "Makes a mask in the form of a shape.")
    VELNOR_FIELD(Shape, Shape, ELLIPSE, "the shape")
    VELNOR_FIELD(double, CenterX, 50.0, "centre of the shape, from the left", Unit("% of the width"), Range(-100, 200),
                 AcceptsFinite())
    VELNOR_FIELD(double, CenterY, 50.0, "centre of the shape, from the top", Unit("% of the height"), Range(-100, 200),
                 AcceptsFinite())
    VELNOR_FIELD(double, Width, 100.0, "width of the shape", Unit("% of the width"), Range(0, 400), AcceptsFrom(0))
    VELNOR_FIELD(double, Height, 100.0, "height of the shape", Unit("% of the height"), Range(0, 400), AcceptsFrom(0))
    VELNOR_FIELD(double, Rotation, 0.0, "angle of the shape, clockwise", Unit("degrees"), Range(-360, 360),
                 AcceptsFinite())
    VELNOR_FIELD(double, CornerRadius, 0.0, "roundness of the rectangle's corners", Unit("% of half its shorter side"),
                 Range(0, 100), AcceptsFrom(0))
    VELNOR_FIELD(int, Sides, 6, "corners of the polygon", Range(3, 24), AcceptsRange())
    VELNOR_FIELD(double, Feather, 50.0, "width of the soft edge, inwards from the outline",
                 Unit("% of the way to the centre"), Range(0, 100), AcceptsFrom(0))
    VELNOR_FIELD(int, Foreground, 0, "value inside the shape; 0 where the picture is to stay clear", Range(0, 255))
    VELNOR_FIELD(int, Background, 255, "value outside the shape", Range(0, 255))
    VELNOR_SETTINGS_END

    /// Whether the mask is the foreground value everywhere, whatever the size of the frame: the two values are the
    /// same, or the shape less its feather covers the frame. A shape that is turned (but by half turns) covers some
    /// frames and not others, so it never counts.
    bool IsForegroundOnly() const;
};

template <>
struct EnumNames<SettingsEffectShapeMask::Shape> {
    using S = SettingsEffectShapeMask;
    static constexpr std::array<EnumName<S::Shape>, 4> VALUES{
        {{S::ELLIPSE, "ellipse"}, {S::RECTANGLE, "rectangle"}, {S::BAND, "band"}, {S::POLYGON, "polygon"}}};
};

} // namespace Velnor::Proc
