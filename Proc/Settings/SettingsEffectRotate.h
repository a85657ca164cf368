#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the rotation.
class VELNOR_API SettingsEffectRotate final : public SettingsOf<SettingsEffectRotate> {
public:
    enum OutputSizeMode : int {
        SAME = 0,  ///< The input's size; what turns out of it is lost.
        WHOLE = 1, ///< Large enough for the whole turned picture.
        INNER = 2, ///< The largest upright rectangle of the input's shape that shows no margin.
        AUTO = 3,  ///< Of quarter turns the whole, which loses no pixel; else the input's size.
    };

    VELNOR_SETTINGS(SettingsEffectRotate, "Turns the picture about its centre.")
    VELNOR_FIELD(double, Angle, 0.0, "angle, counter-clockwise; below 0 clockwise", Unit("degrees"), Range(-360, 360),
                 Example("2.5"), AcceptsFinite())
    VELNOR_FIELD(OutputSizeMode, OutputSizeMode, AUTO,
                 "size of the result; auto is whole for quarter turns, which are exact, and else same")
    VELNOR_FIELD(Color, FillColor, Color(0, 0, 0, 0), "colour where the turned picture does not reach")
    VELNOR_SETTINGS_END

    bool IsEmpty() const override { return Settings::IsEmpty() || valueAngle == 0; }
};

template <>
struct EnumNames<SettingsEffectRotate::OutputSizeMode> {
    using S = SettingsEffectRotate;
    static constexpr std::array<EnumName<S::OutputSizeMode>, 4> VALUES{
        {{S::SAME, "same"}, {S::WHOLE, "whole"}, {S::INNER, "inner"}, {S::AUTO, "auto"}}};
};

} // namespace Velnor::Proc
