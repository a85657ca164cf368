#pragma once

#include "Proc/Interfaces/SettingsFields.h"

#include <functional>
#include <utility>

namespace Velnor::Proc {

/// Settings of the remapping: a function, which cannot be compared, so these settings have no equality.
class VELNOR_API SettingsEffectRemapping final : public SettingsOf<SettingsEffectRemapping> {
public:
    /// From an output pixel (x, y) to the position in the source that it shows. Positions are those of sample centres:
    /// (0, 0) is the first pixel's. Called once a pixel, from one thread.
    using Map = std::function<std::pair<float, float>(int x, int y)>;

    VELNOR_SETTINGS(SettingsEffectRemapping, "Moves pixels by a function of the caller's, or by a lens's distortion.")
    VELNOR_FIELD(Map, Map, nullptr, "the source position of each output pixel; where there is none the lens counts")
    VELNOR_FIELD(double, Lens, 0.0,
                 "radial distortion without a map: how much farther from the centre the corners "
                 "read",
                 Unit("%"), Range(-50, 50), Example("-5"), AcceptsFinite())
    VELNOR_SETTINGS_END

    explicit SettingsEffectRemapping(Map map) : valueMap(std::move(map)) {}

    bool IsEmpty() const override { return Settings::IsEmpty() || (!valueMap && valueLens == 0); }
};

} // namespace Velnor::Proc
