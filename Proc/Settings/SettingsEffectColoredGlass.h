#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of ColoredGlass.
class VELNOR_API SettingsEffectColoredGlass final : public SettingsOf<SettingsEffectColoredGlass> {
    VELNOR_SETTINGS(SettingsEffectColoredGlass, "Turns the picture into a window of coloured glass in lead.")
    VELNOR_FIELD(double, CellSize, 4.0, "side of a pane where there is little detail", Unit("% of the shorter side"),
                 Range(0.5, 50), Accepts(0.1, 100))
    VELNOR_FIELD(double, EdgeAwareness, 60.0,
                 "how closely the panes follow the picture's edges, and how much smaller they are where there are many",
                 Unit("%"), Range(0, 100), AcceptsRange())
    VELNOR_FIELD(double, LeadWidth, 8.0, "width of the lead", Unit("% of a pane's side"), Range(0, 50), Accepts(0, 100))
    VELNOR_FIELD(Color, LeadColor, Color(20, 20, 20, 255), "colour of the lead")
    VELNOR_FIELD(double, Saturation, 130.0, "saturation of the glass", Unit("%"), Range(0, 300), Accepts(0, 1000))
    VELNOR_FIELD(unsigned int, Seed, 1, "start of the random places: the same seed gives the same window")
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
