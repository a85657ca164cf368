#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the flip.
class VELNOR_API SettingsEffectFlip final : public SettingsOf<SettingsEffectFlip> {
public:
    enum Direction : int {
        HORIZONTAL = 0, ///< Left and right change places.
        VERTICAL = 1,   ///< Top and bottom change places.
        BOTH = 2,       ///< Half a turn.
    };

    VELNOR_SETTINGS(SettingsEffectFlip, "Mirrors the picture.")
    VELNOR_FIELD(Direction, Direction, HORIZONTAL, "which sides change places: horizontal is left and right")
    VELNOR_SETTINGS_END

    explicit SettingsEffectFlip(enum Direction direction) : valueDirection(direction) {}
};

template <>
struct EnumNames<SettingsEffectFlip::Direction> {
    using S = SettingsEffectFlip;
    static constexpr std::array<EnumName<S::Direction>, 3> VALUES{
        {{S::HORIZONTAL, "horizontal"}, {S::VERTICAL, "vertical"}, {S::BOTH, "both"}}};
};

} // namespace Velnor::Proc
