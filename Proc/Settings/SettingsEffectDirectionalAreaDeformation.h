#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of DirectionalAreaDeformation: one stroke of a push brush.
class VELNOR_API SettingsEffectDirectionalAreaDeformation final
    : public SettingsOf<SettingsEffectDirectionalAreaDeformation> {
    VELNOR_SETTINGS(SettingsEffectDirectionalAreaDeformation, "Pushes part of the picture along a stroke.")
    VELNOR_FIELD(int, FromX, 0, "start of the stroke, from the left", Unit("pixels"))
    VELNOR_FIELD(int, FromY, 0, "start of the stroke, from the top", Unit("pixels"))
    VELNOR_FIELD(int, ToX, 0, "end of the stroke, from the left", Unit("pixels"))
    VELNOR_FIELD(int, ToY, 0, "end of the stroke, from the top", Unit("pixels"))
    VELNOR_FIELD(int, Size, 100, "diameter of the brush", Unit("pixels"), Range(0, 100000))
    VELNOR_FIELD(double, Strength, 50.0, "how strongly the brush pushes", Unit("%"), Range(0, 1000))
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
