#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of Implode.
class VELNOR_API SettingsEffectImplode final : public SettingsOf<SettingsEffectImplode> {
public:
    enum Mode : int {
        PINCH = 0, ///< The centre shows what lies farther out.
        BULGE = 1, ///< The centre shows what lies nearer to it, up to twice as large.
    };

    VELNOR_SETTINGS(SettingsEffectImplode, "Pinches the picture towards its centre or bulges it outwards.")
    VELNOR_FIELD(double, Strength, 50.0, "how strongly", Unit("%"), Range(0, 100), AcceptsFinite())
    VELNOR_FIELD(Mode, Mode, PINCH, "which way", AcceptsAnything())
    VELNOR_SETTINGS_END

    bool IsEmpty() const override { return Settings::IsEmpty() || valueStrength == 0; }
};

template <>
struct EnumNames<SettingsEffectImplode::Mode> {
    using S = SettingsEffectImplode;
    static constexpr std::array<EnumName<S::Mode>, 2> VALUES{{{S::PINCH, "pinch"}, {S::BULGE, "bulge"}}};
};

} // namespace Velnor::Proc
