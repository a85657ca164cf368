#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the contrast-limited adaptive histogram equalisation.
class VELNOR_API SettingsEffectCLAHE final : public SettingsOf<SettingsEffectCLAHE> {
    VELNOR_SETTINGS(SettingsEffectCLAHE, "Raises local contrast, within a limit.")
    VELNOR_FIELD(double, ClipLimit, 2.0,
                 "limit of the contrast in each of 8 x 8 tiles, in multiples of a flat "
                 "histogram's level",
                 Range(0, 40), AcceptsFrom(0))
    VELNOR_SETTINGS_END

    explicit SettingsEffectCLAHE(double clipLimit) : valueClipLimit(clipLimit) {}
};

} // namespace Velnor::Proc
