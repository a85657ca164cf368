#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of GrabCut. Stroke values are compared and written as bytes: the low 8 bits count.
class VELNOR_API SettingsEffectGrabCut final : public SettingsOf<SettingsEffectGrabCut> {
public:
    enum Algorithm : int {
        GRID_GRAPH = 0, ///< The parallel minimum cut.
        OPENCV = 1,     ///< Colour models refined by repeated cuts.
    };

    VELNOR_SETTINGS(SettingsEffectGrabCut, "Cuts an object out by strokes on it and on its background: makes its mask.")
    static constexpr std::array PICTURES{PictureRole::Photograph, PictureRole::Mask};
    VELNOR_FIELD(int, Foreground, 255, "value of the strokes on the object", Range(0, 255))
    VELNOR_FIELD(int, Background, 128, "value of the strokes on the background", Range(0, 255))
    VELNOR_FIELD(Algorithm, Algorithm, GRID_GRAPH, "how the cut is found", AcceptsAnything())
    VELNOR_FIELD(int, Alpha, 255, "value of the object in the mask", Range(0, 255))
    /// The border that smoothing needs is as wide, hence an end.
    VELNOR_FIELD(int, Smooth, 0, "how often the mask's edge is smoothed", Range(0, 20), Accepts(0, 1000))
    VELNOR_FIELD(bool, KeepSelection, false, "whether the strokes are copied over the mask")
    VELNOR_FIELD_AS(ShowProgress, bool, ShowProgress, true, "whether the cut reports its progress")
    VELNOR_SETTINGS_END
};

template <>
struct EnumNames<SettingsEffectGrabCut::Algorithm> {
    using S = SettingsEffectGrabCut;
    static constexpr std::array<EnumName<S::Algorithm>, 2> VALUES{
        {{S::GRID_GRAPH, "grid-graph"}, {S::OPENCV, "opencv"}}};
};

} // namespace Velnor::Proc
