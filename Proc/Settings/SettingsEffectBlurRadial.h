#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of BlurRadial.
class VELNOR_API SettingsEffectBlurRadial final : public SettingsOf<SettingsEffectBlurRadial> {
public:
    enum Mode : int {
        SPIN = 0, ///< Along circles about the centre.
        ZOOM = 1, ///< Along rays from the centre.
    };

    VELNOR_SETTINGS(SettingsEffectBlurRadial, "Blurs as if the camera had turned or zoomed about a centre.")
    VELNOR_FIELD(Mode, Mode, ZOOM, "direction of the movement")
    VELNOR_FIELD(double, Strength, 30.0, "length of the movement: 100 turns by 45 degrees, or zooms by two thirds",
                 Unit("%"), Range(0, 100), AcceptsRange())
    VELNOR_FIELD(double, CenterX, 50.0, "centre, from the left", Unit("% of the width"), Range(-100, 200),
                 Accepts(-1000, 1000))
    VELNOR_FIELD(double, CenterY, 50.0, "centre, from the top", Unit("% of the height"), Range(-100, 200),
                 Accepts(-1000, 1000))
    VELNOR_SETTINGS_END

    bool IsEmpty() const override { return Settings::IsEmpty() || valueStrength == 0; }
};

template <>
struct EnumNames<SettingsEffectBlurRadial::Mode> {
    using S = SettingsEffectBlurRadial;
    static constexpr std::array<EnumName<S::Mode>, 2> VALUES{{{S::SPIN, "spin"}, {S::ZOOM, "zoom"}}};
};

} // namespace Velnor::Proc
