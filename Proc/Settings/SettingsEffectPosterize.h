#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of Posterize.
class VELNOR_API SettingsEffectPosterize final : public SettingsOf<SettingsEffectPosterize> {
    VELNOR_SETTINGS(SettingsEffectPosterize, "Reduces the picture to a few colours by classes of brightness.")
    VELNOR_FIELD(int, ColorsNumber, 8, "number of classes", Range(1, 256), AcceptsRange())
    VELNOR_FIELD_AS(IsPal, bool, IsPal, false, "whether the result is a palette picture of class numbers")
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
