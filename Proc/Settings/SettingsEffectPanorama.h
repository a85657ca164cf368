#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the panorama. It takes two pictures or more, in any order.
class VELNOR_API SettingsEffectPanorama final : public SettingsOf<SettingsEffectPanorama> {
public:
    enum Mode : int {
        ROTATION = 0, ///< The camera turned on one spot; the result is a part of a sphere.
        SCANS = 1,    ///< The camera, or a scanner, moved along something flat; the result is flat.
    };
    enum Border : int {
        CLEAR = 0, ///< RGBA, what no picture shows is clear.
        CROP = 1,  ///< RGB24, the largest rectangle that the pictures fill.
    };

    VELNOR_SETTINGS(SettingsEffectPanorama, "Joins overlapping photographs into one.")
    VELNOR_FIELD(Mode, Mode, ROTATION, "how the camera moved from one photograph to the next")
    VELNOR_FIELD(double, Confidence, 1.0, "how well two photographs must match to be joined; less joins more readily",
                 Range(0, 10), AcceptsRange())
    VELNOR_FIELD(Border, Border, CLEAR, "what becomes of the parts that no photograph shows")
    VELNOR_SETTINGS_END
};

template <>
struct EnumNames<SettingsEffectPanorama::Mode> {
    using S = SettingsEffectPanorama;
    static constexpr std::array<EnumName<S::Mode>, 2> VALUES{{{S::ROTATION, "rotation"}, {S::SCANS, "scans"}}};
};

template <>
struct EnumNames<SettingsEffectPanorama::Border> {
    using S = SettingsEffectPanorama;
    static constexpr std::array<EnumName<S::Border>, 2> VALUES{{{S::CLEAR, "clear"}, {S::CROP, "crop"}}};
};

} // namespace Velnor::Proc
