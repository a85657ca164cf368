#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of Sketch.
class VELNOR_API SettingsEffectSketch final : public SettingsOf<SettingsEffectSketch> {
    VELNOR_SETTINGS(SettingsEffectSketch, "Draws the picture in pencil.")
    VELNOR_FIELD(double, Strength, 100.0, "how much of the drawing is seen", Unit("%"), Range(0, 100), AcceptsRange())
    VELNOR_FIELD(double, Pencil, 1.0, "breadth of the pencil", Unit("% of the shorter side"), Range(0.1, 5),
                 Accepts(0, 100))
    VELNOR_FIELD(double, Darkness, 50.0, "pressure of the pencil", Unit("%"), Range(0, 100), AcceptsRange())
    VELNOR_FIELD(double, Hatching, 40.0, "how strongly shadows are hatched", Unit("%"), Range(0, 100), AcceptsRange())
    VELNOR_FIELD(double, Paper, 30.0, "roughness of the paper", Unit("%"), Range(0, 100), AcceptsRange())
    VELNOR_FIELD(double, Color, 0.0, "how much of the picture's colour is kept", Unit("%"), Range(0, 100),
                 AcceptsRange())
    VELNOR_SETTINGS_END

    bool IsEmpty() const override { return Settings::IsEmpty() || valueStrength == 0; }
};

} // namespace Velnor::Proc
