#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the blur.
class VELNOR_API SettingsEffectBlur final : public SettingsOf<SettingsEffectBlur> {
public:
    enum Algorithm : int {
        BOX = 0,
        GAUSSIAN = 1,
        STACK = 2, ///< A box blurred by a box of the same width: a triangle.
    };
    enum ScaleType : int {
        PIXELS = 0,  ///< Deviations are DevX and DevY, in pixels.
        PERCENT = 1, ///< Deviations are ScaleX and ScaleY, in percent of the picture's width and height.
    };

    VELNOR_SETTINGS(SettingsEffectBlur, "Blurs the picture.")
    VELNOR_FIELD(Algorithm, Algorithm, GAUSSIAN, "shape of the blur")
    VELNOR_FIELD(int, KernelLength, 3, "half-width of the kernel", Unit("deviations"), Range(1, 8), AcceptsFrom(1))
    VELNOR_FIELD(double, DevX, 3.0, "standard deviation across", Unit("pixels"), Range(0, 1000),
                 Accepts(0, LARGEST_PICTURE_SIDE))
    VELNOR_FIELD(double, DevY, 3.0, "standard deviation down", Unit("pixels"), Range(0, 1000),
                 Accepts(0, LARGEST_PICTURE_SIDE))
    VELNOR_FIELD(ScaleType, ScaleType, PIXELS, "what the deviations are measured in")
    VELNOR_FIELD(double, ScaleX, 1.0, "standard deviation across, with scale-type percent", Unit("% of the width"),
                 Range(0, 100), AcceptsFrom(0))
    VELNOR_FIELD(double, ScaleY, 1.0, "standard deviation down, with scale-type percent", Unit("% of the height"),
                 Range(0, 100), AcceptsFrom(0))
    VELNOR_FIELD(int, PlanesMask, 0, "planes to blur, one bit each from the lowest; 0 is all of them", Range(0, 15))
    VELNOR_SETTINGS_END

    explicit SettingsEffectBlur(Algorithm algorithm) : valueAlgorithm(algorithm) {}
};

template <>
struct EnumNames<SettingsEffectBlur::Algorithm> {
    using S = SettingsEffectBlur;
    static constexpr std::array<EnumName<S::Algorithm>, 3> VALUES{
        {{S::BOX, "box"}, {S::GAUSSIAN, "gaussian"}, {S::STACK, "stack"}}};
};

template <>
struct EnumNames<SettingsEffectBlur::ScaleType> {
    using S = SettingsEffectBlur;
    static constexpr std::array<EnumName<S::ScaleType>, 2> VALUES{{{S::PIXELS, "pixels"}, {S::PERCENT, "percent"}}};
};

} // namespace Velnor::Proc
