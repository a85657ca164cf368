#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the padding.
class VELNOR_API SettingsEffectPad final : public SettingsOf<SettingsEffectPad> {
public:
    enum Mode : int {
        COLOR = 0,  ///< One colour.
        EDGE = 1,   ///< The nearest sample of the edge.
        MIRROR = 2, ///< The picture mirrored at its edges, as often as needed; the edge appears twice.
    };

    VELNOR_SETTINGS(SettingsEffectPad, "Adds margins around the picture.")
    VELNOR_FIELD(Color, MarginColor, Color(0, 0, 0, 255), "colour of the margins, with mode color")
    VELNOR_FIELD(CropInfo, Margins, {}, "what is added on each side", Unit("pixels"), Example("4,2,3,5"))
    VELNOR_FIELD(Mode, PadMode, COLOR, "what the margins show")
    VELNOR_SETTINGS_END

    explicit SettingsEffectPad(Mode mode) : valuePadMode(mode) {}
    SettingsEffectPad(CropInfo const& margins, Mode mode) : valueMargins(margins), valuePadMode(mode) {}

    bool IsEmpty() const override { return Settings::IsEmpty() || valueMargins == CropInfo(); }
};

template <>
struct EnumNames<SettingsEffectPad::Mode> {
    using S = SettingsEffectPad;
    static constexpr std::array<EnumName<S::Mode>, 3> VALUES{
        {{S::COLOR, "color"}, {S::EDGE, "edge"}, {S::MIRROR, "mirror"}}};
};

} // namespace Velnor::Proc
