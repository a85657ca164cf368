#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the resizer.
class VELNOR_API SettingsResizer final : public SettingsOf<SettingsResizer> {
public:
    enum ResizeMethods : int {
        FAST_BILINEAR = 0,
        BILINEAR = 1,
        BICUBIC = 2,
        EXPERIMENTAL = 3,
        POINT = 4,
        AREA = 5,
        BICUBLIN = 6, ///< Bicubic luma, bilinear chroma.
        GAUSS = 7,
        SINC = 8,
        LANCZOS = 9,
        SPLINE = 10,
    };
    enum ResizeMode : int {
        OFF = 0,
        TO_WIDTH = 1,  ///< To the target's width, keeping the shape.
        TO_HEIGHT = 2, ///< To the target's height, keeping the shape.
        BY_FACTOR = 3, ///< Both sides times the factor.
        TO_FRAME = 4,  ///< To the target, as the fit says.
    };
    enum Fit : int {
        EXACT = 0,
        STRETCH = 1,       ///< As EXACT.
        BARS = 2,          ///< Inside, black bars around.
        FILL = 3,          ///< Covers the target; what stands over is cut.
        SHRINK_INSIDE = 4, ///< Inside, never larger than it was.
        INSIDE = 5,        ///< Inside, grown or shrunk, no bars.
    };

    VELNOR_SETTINGS(SettingsResizer, "Resizes the picture.")
    VELNOR_FIELD(ResizeMethods, Method, BICUBIC, "resampling method")
    VELNOR_FIELD(ResizeMode, Mode, OFF, "what the new size is made from; off where width, height or long-side is given",
                 Example("to-frame"))
    VELNOR_FIELD(Fit, Fitting, EXACT, "how the picture's shape meets the target's, with mode to-frame")
    VELNOR_FIELD(double, Factor, 1.0, "scale of both sides, with mode by-factor", Range(1e-6, 1000), Example("0.5"),
                 AcceptsFrom(0))
    VELNOR_FIELD(FrameFormat, Target, {}, "size to reach, with the modes to-width, to-height and to-frame",
                 Unit("pixels"), Example("1024x768"))
    VELNOR_FLAG(KeepAttributes, true, "whether the time attributes go on to the result")
    VELNOR_FLAG(AtLeastOnePixel, true, "whether a side that would come out as 0 becomes 1; else it is an error")
    VELNOR_FIELD(std::uint32_t, Width, 0, "width to reach, with no mode; the height follows unless it is set too",
                 Unit("pixels"), Range(0, LARGEST_PICTURE_SIDE))
    VELNOR_FIELD(std::uint32_t, Height, 0,
                 "height to reach, with no mode; of both, the picture keeps its shape inside unless fitting says else",
                 Unit("pixels"), Range(0, LARGEST_PICTURE_SIDE))
    VELNOR_FIELD(std::uint32_t, LongSide, 0,
                 "length of the longer side, with no mode; fitting shrink-inside never enlarges", Unit("pixels"),
                 Range(0, LARGEST_PICTURE_SIDE))
    VELNOR_SETTINGS_END

    bool IsEmpty() const override { return Settings::IsEmpty() || (valueMode == OFF && !HasSides()); }

    /// Whether the size to reach is given by sides, not by a mode.
    bool HasSides() const { return valueWidth != 0 || valueHeight != 0 || valueLongSide != 0; }
};

template <>
struct EnumNames<SettingsResizer::ResizeMethods> {
    using S = SettingsResizer;
    static constexpr std::array<EnumName<S::ResizeMethods>, 11> VALUES{{{S::FAST_BILINEAR, "fast-bilinear"},
                                                                        {S::BILINEAR, "bilinear"},
                                                                        {S::BICUBIC, "bicubic"},
                                                                        {S::EXPERIMENTAL, "experimental"},
                                                                        {S::POINT, "point"},
                                                                        {S::AREA, "area"},
                                                                        {S::BICUBLIN, "bicublin"},
                                                                        {S::GAUSS, "gauss"},
                                                                        {S::SINC, "sinc"},
                                                                        {S::LANCZOS, "lanczos"},
                                                                        {S::SPLINE, "spline"}}};
};

template <>
struct EnumNames<SettingsResizer::ResizeMode> {
    using S = SettingsResizer;
    static constexpr std::array<EnumName<S::ResizeMode>, 5> VALUES{{{S::OFF, "off"},
                                                                    {S::TO_WIDTH, "to-width"},
                                                                    {S::TO_HEIGHT, "to-height"},
                                                                    {S::BY_FACTOR, "by-factor"},
                                                                    {S::TO_FRAME, "to-frame"}}};
};

template <>
struct EnumNames<SettingsResizer::Fit> {
    using S = SettingsResizer;
    static constexpr std::array<EnumName<S::Fit>, 6> VALUES{{{S::EXACT, "exact"},
                                                             {S::STRETCH, "stretch"},
                                                             {S::BARS, "bars"},
                                                             {S::FILL, "fill"},
                                                             {S::SHRINK_INSIDE, "shrink-inside"},
                                                             {S::INSIDE, "inside"}}};
};

} // namespace Velnor::Proc
