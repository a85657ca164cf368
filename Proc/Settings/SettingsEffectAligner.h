#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of Aligner, and how many faces it found. The largest face counts.
class VELNOR_API SettingsEffectAligner final : public SettingsOf<SettingsEffectAligner> {
    VELNOR_SETTINGS(SettingsEffectAligner, "Turns, scales and crops so that the eyes are level at a chosen place.")
    VELNOR_FIELD(double, EyesX, 50.0, "where the middle between the eyes comes, from the left", Unit("% of the width"),
                 Range(0, 100), AcceptsRange())
    VELNOR_FIELD(double, EyesY, 42.0, "where the middle between the eyes comes, from the top", Unit("% of the height"),
                 Range(0, 100), AcceptsRange())
    VELNOR_FIELD(double, EyesDistance, 25.0, "from the middle of an eye to that of the other",
                 Unit("% of the shorter side"), Range(1, 100), AcceptsRange())
    VELNOR_FIELD(int, Width, 0, "width of the result; 0 is that of the picture", Unit("pixels"), Range(0, 16384),
                 AcceptsRange())
    VELNOR_FIELD(int, Height, 0, "height of the result; 0 is that of the picture", Unit("pixels"), Range(0, 16384),
                 AcceptsRange())
    VELNOR_FIELD(int, FacesFound, 0, "faces found in the last picture; without one it is not changed", Output())
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
