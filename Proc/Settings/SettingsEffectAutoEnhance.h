#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of AutoEnhance.
class VELNOR_API SettingsEffectAutoEnhance final : public SettingsOf<SettingsEffectAutoEnhance> {
public:
    static constexpr double DEFAULT_INTENSITY = 100.0;

    VELNOR_SETTINGS(SettingsEffectAutoEnhance, "Improves contrast, light and colour by the picture itself.")
    VELNOR_FIELD(double, Intensity, DEFAULT_INTENSITY, "how much of the improved picture is taken", Unit("%"),
                 Range(0, 100))
    VELNOR_SETTINGS_END

    /// Whether the improved picture is the result as it is.
    bool IsIntensityDefault() const { return valueIntensity == DEFAULT_INTENSITY; }
};

} // namespace Velnor::Proc
