#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of Cutter.
class VELNOR_API SettingsEffectCutter final : public SettingsOf<SettingsEffectCutter> {
public:
    enum PadMode : int { MIRROR = 0, COLOR = 1 };

    VELNOR_SETTINGS(SettingsEffectCutter, "Cuts the picture into patches of one size, which may overlap.")
    static constexpr std::array PICTURES{PictureRole::Photograph};
    VELNOR_FIELD(int, PatchWidth, 256, "width of a patch", Unit("pixels"), Range(1, 4096), AcceptsFrom(1))
    VELNOR_FIELD(int, PatchHeight, 256, "height of a patch", Unit("pixels"), Range(1, 4096), AcceptsFrom(1))
    VELNOR_FIELD(int, OverlapX, 0, "how far a patch reaches into the one to its right", Unit("pixels"),
                 Range(-4096, 4095))
    VELNOR_FIELD(int, OverlapY, 0, "how far a patch reaches into the one below it", Unit("pixels"), Range(-4096, 4095))
    VELNOR_FIELD(PadMode, PadMode, MIRROR, "what the last patches show beyond the picture", AcceptsAnything())
    VELNOR_FIELD(Color, PadColor, Color(0, 0, 0, 255), "colour there, with pad-mode color")
    VELNOR_SETTINGS_END
};

template <>
struct EnumNames<SettingsEffectCutter::PadMode> {
    using S = SettingsEffectCutter;
    static constexpr std::array<EnumName<S::PadMode>, 2> VALUES{{{S::MIRROR, "mirror"}, {S::COLOR, "color"}}};
};

} // namespace Velnor::Proc
