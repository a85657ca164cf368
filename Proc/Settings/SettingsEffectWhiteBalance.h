#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of WhiteBalance.
class VELNOR_API SettingsEffectWhiteBalance final : public SettingsOf<SettingsEffectWhiteBalance> {
    VELNOR_SETTINGS(SettingsEffectWhiteBalance,
                    "Removes a colour cast: a colour that ought to be neutral becomes grey.")
    VELNOR_FIELD(Color, Reference, Color(255, 255, 255, 255), "colour of the picture that ought to be neutral grey",
                 Example("#c8b496"))
    VELNOR_SETTINGS_END

    explicit SettingsEffectWhiteBalance(Color const& reference) : valueReference(reference) {}

    /// A reference that is grey already asks for no change.
    bool IsEmpty() const override {
        return Settings::IsEmpty() ||
               (valueReference[0] == valueReference[1] && valueReference[1] == valueReference[2]);
    }
};

} // namespace Velnor::Proc
