#pragma once

#include "Proc/Interfaces/SettingsFields.h"
#include "Proc/Settings/SettingsEffectShapeMask.h"

namespace Velnor::Proc {

/// Settings of TiltShift.
class VELNOR_API SettingsEffectTiltShift final : public SettingsOf<SettingsEffectTiltShift> {
public:
    /// A level band a third of the frame high, sharp in its middle.
    static SettingsEffectShapeMask DefaultMask() {
        return SettingsEffectShapeMask().SetShape(SettingsEffectShapeMask::BAND).SetHeight(50).SetFeather(70);
    }

    VELNOR_SETTINGS(SettingsEffectTiltShift, "Blurs all but a band, as if the scene were a miniature.")
    VELNOR_FIELD(int, Blur, 100, "strength of the blur", Unit("%"), Range(0, 100))
    VELNOR_FIELD(int, Sharpen, 0, "how much edges in the blurred area are sharpened; a blur of 100 leaves none",
                 Unit("%"), Range(0, 100))
    VELNOR_FIELD(SettingsEffectShapeMask, ShapeMask, DefaultMask(), "the area that stays sharp")
    VELNOR_SETTINGS_END

    bool IsAlphaEqual(SettingsEffectTiltShift const& other) const { return valueShapeMask == other.valueShapeMask; }
    bool IsBlurEqual(SettingsEffectTiltShift const& other) const {
        return valueBlur == other.valueBlur && valueSharpen == other.valueSharpen;
    }

    bool IsEmpty() const override { return Settings::IsEmpty() || (valueBlur == 0 && valueSharpen == 0); }
};

} // namespace Velnor::Proc
