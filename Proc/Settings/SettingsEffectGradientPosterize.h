#pragma once

#include "Proc/Interfaces/SettingsFields.h"

#include <cstdint>

namespace Velnor::Proc {

/// Settings of GradientPosterize.
class VELNOR_API SettingsEffectGradientPosterize final : public SettingsOf<SettingsEffectGradientPosterize> {
    VELNOR_SETTINGS(SettingsEffectGradientPosterize, "Reduces the colours to a few, and keeps the brightness.")
    VELNOR_FIELD(std::uint8_t, ColorCount, 8, "number of colours", Range(1, 255), AcceptsRange())
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
