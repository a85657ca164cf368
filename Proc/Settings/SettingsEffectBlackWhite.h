#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of BlackWhite.
class VELNOR_API SettingsEffectBlackWhite final : public SettingsOf<SettingsEffectBlackWhite> {
    VELNOR_SETTINGS(SettingsEffectBlackWhite, "Reduces the picture to two colours by a threshold of brightness.")
    VELNOR_FIELD(double, Threshold, 0.5, "brightness from which a pixel takes the second colour; 1 leaves none",
                 Range(0, 1))
    VELNOR_FIELD(Color, FirstColor, Color::Black(Color::Opacity::Opaque), "colour of the dark pixels")
    VELNOR_FIELD(Color, SecondColor, Color::White(Color::Opacity::Opaque), "colour of the bright pixels")
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
