#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of ReduceLocalLuma.
class VELNOR_API SettingsEffectReduceLocalLuma final : public SettingsOf<SettingsEffectReduceLocalLuma> {
public:
    enum Tones : int { ALL = 0, SHADOWS = 1, HIGHLIGHTS = 2 };

    VELNOR_SETTINGS(SettingsEffectReduceLocalLuma, "Burns or dodges where the second picture, a mask, is bright.")
    VELNOR_FIELD(double, Strength, 50.0, "how much is burnt, 2 stops at 100; below 0 it is dodged", Unit("%"),
                 Range(-100, 100))
    VELNOR_FIELD(Tones, Tones, ALL, "the tones that are changed most")
    VELNOR_FIELD(double, Feather, 2.0, "softness of the mask's edge", Unit("% of the shorter side"), Range(0, 25))
    VELNOR_SETTINGS_END
};

template <>
struct EnumNames<SettingsEffectReduceLocalLuma::Tones> {
    using S = SettingsEffectReduceLocalLuma;
    static constexpr std::array<EnumName<S::Tones>, 3> VALUES{
        {{S::ALL, "all"}, {S::SHADOWS, "shadows"}, {S::HIGHLIGHTS, "highlights"}}};
};

} // namespace Velnor::Proc
