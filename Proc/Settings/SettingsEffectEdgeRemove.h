#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of EdgeRemove.
class VELNOR_API SettingsEffectEdgeRemove final : public SettingsOf<SettingsEffectEdgeRemove> {
    VELNOR_SETTINGS(SettingsEffectEdgeRemove, "Cleans the fringe of a cut-out and makes its mask the opacity.")
    static constexpr std::array PICTURES{PictureRole::Photograph, PictureRole::Mask};
    VELNOR_FIELD(double, Strength, 100.0, "how much of the background's colour is taken out of the fringe", Unit("%"),
                 Range(0, 100), AcceptsRange())
    VELNOR_FIELD(int, Fringe, 3, "how far into the object the background's colour reaches", Unit("pixels"),
                 Range(0, 100), AcceptsRange())
    VELNOR_FIELD(int, Erosion, 0, "how much narrower the mask becomes on each side", Unit("pixels"), Range(0, 100),
                 AcceptsRange())
    VELNOR_FIELD(double, Feather, 0.5, "softness of the mask's edge, as a standard deviation", Unit("pixels"),
                 Range(0, 100), AcceptsRange())
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
