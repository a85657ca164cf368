#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of DetailsEnhance.
class VELNOR_API SettingsEffectDetailsEnhance final : public SettingsOf<SettingsEffectDetailsEnhance> {
    VELNOR_SETTINGS(SettingsEffectDetailsEnhance, "Brings out fine and coarse detail, without halos at edges.")
    VELNOR_FIELD(int, Fine, 80, "how much fine detail is added", Unit("%"), Range(0, 300), Accepts(0, 1000))
    VELNOR_FIELD(int, Coarse, 40, "how much coarse detail is added", Unit("%"), Range(0, 300), Accepts(0, 1000))
    VELNOR_FIELD(int, Edges, 40, "contrast above which an edge is left as it is: higher takes more for detail",
                 Unit("%"), Range(1, 90), Accepts(0, 100))
    VELNOR_SETTINGS_END

    bool IsEmpty() const override { return Settings::IsEmpty() || (valueFine == 0 && valueCoarse == 0); }
};

} // namespace Velnor::Proc
