#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// How the constant opacity of a blend joins the opacity that a pixel of the second picture has itself.
enum BlendAlphaMode : int {
    BLEND_PRODUCT = 0,  ///< Their product: 255 changes nothing.
    BLEND_LARGER = 1,   ///< The larger of the two: 0 changes nothing.
    BLEND_CONSTANT = 2, ///< The constant alone.
};

template <>
struct EnumNames<BlendAlphaMode> {
    static constexpr std::array<EnumName<BlendAlphaMode>, 3> VALUES{
        {{BLEND_PRODUCT, "product"}, {BLEND_LARGER, "larger"}, {BLEND_CONSTANT, "constant"}}};
};

/// Settings of the image blender.
class VELNOR_API SettingsEffectImageBlender final : public SettingsOf<SettingsEffectImageBlender> {
    VELNOR_SETTINGS(SettingsEffectImageBlender, "Lays a second picture over the first, by its opacity.")
    VELNOR_FIELD(int, PositionX, 0, "column of the first picture where the second begins; may be negative",
                 Unit("pixels"), Range(-1.0 * LARGEST_PICTURE_SIDE, LARGEST_PICTURE_SIDE), Example("3"))
    VELNOR_FIELD(int, PositionY, 0, "row of the first picture where the second begins; may be negative", Unit("pixels"),
                 Range(-1.0 * LARGEST_PICTURE_SIDE, LARGEST_PICTURE_SIDE), Example("2"))
    VELNOR_FIELD(int, Alpha, 255, "constant opacity: 0 is clear, 255 opaque", Range(0, 255), Example("127"))
    VELNOR_FIELD(BlendAlphaMode, AlphaMode, BLEND_PRODUCT, "how the constant joins the second picture's own opacity")
    VELNOR_SETTINGS_END

    SettingsEffectImageBlender(int positionX, int positionY, int alpha, BlendAlphaMode mode)
        : valuePositionX(positionX), valuePositionY(positionY), valueAlpha(alpha), valueAlphaMode(mode) {}
};

} // namespace Velnor::Proc
