#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the generator of shape pictures: a white shape that fills a black grey picture.
class VELNOR_API SettingsEffectVideoGenerator final : public SettingsOf<SettingsEffectVideoGenerator> {
public:
    enum Shape : int { DISC = 0, POLYGON = 1, RING = 2, HEART = 3, STAR = 4 };

    VELNOR_SETTINGS(SettingsEffectVideoGenerator, "Makes a grey picture of a shape, such as a lens aperture.")
    VELNOR_FIELD(Shape, Shape, DISC, "the shape")
    VELNOR_FIELD(FrameFormat, Size, FrameFormat::Square(256, 256), "size of the picture", Unit("pixels"),
                 Example("256x256"))
    VELNOR_FIELD(int, Blades, 6, "blades of the polygon's aperture, or points of the star", Range(3, 24),
                 AcceptsRange())
    VELNOR_FIELD(double, Roundness, 0.0, "how round the polygon's sides are: 0 straight, 100 a circle", Unit("%"),
                 Range(0, 100), AcceptsFinite())
    VELNOR_FIELD(double, InnerRadius, 60.0, "radius of the ring's hole, or of the star's inner corners",
                 Unit("% of the outer"), Range(0, 100), AcceptsFinite())
    VELNOR_FIELD(double, Rotation, 0.0, "angle of the shape, clockwise", Unit("degrees"), Range(-360, 360),
                 AcceptsFinite())
    VELNOR_SETTINGS_END
};

template <>
struct EnumNames<SettingsEffectVideoGenerator::Shape> {
    using S = SettingsEffectVideoGenerator;
    static constexpr std::array<EnumName<S::Shape>, 5> VALUES{
        {{S::DISC, "disc"}, {S::POLYGON, "polygon"}, {S::RING, "ring"}, {S::HEART, "heart"}, {S::STAR, "star"}}};
};

} // namespace Velnor::Proc
