#pragma once

#include "Proc/Interfaces/SettingsFields.h"
#include "Proc/Settings/SettingsEffectShapeMask.h"

namespace Velnor::Proc {

/// Settings of Vignette.
class VELNOR_API SettingsEffectVignette final : public SettingsOf<SettingsEffectVignette> {
public:
    /// An ellipse that reaches past the middle of the sides, soft from well inside.
    static SettingsEffectShapeMask DefaultMask() {
        return SettingsEffectShapeMask().SetWidth(140).SetHeight(140).SetFeather(75).SetBackground(200);
    }

    VELNOR_SETTINGS(SettingsEffectVignette, "Darkens or tints the edges of the picture.")
    VELNOR_FIELD(Color, Color, ::Velnor::Proc::Color(0, 0, 0, 255), "colour of the edges; its opacity is not used",
                 Example("#302010"))
    VELNOR_FIELD(SettingsEffectShapeMask, ShapeMask, DefaultMask(), "the area that stays clear")
    VELNOR_SETTINGS_END

    bool IsEmpty() const override { return Settings::IsEmpty() || valueShapeMask.IsForegroundOnly(); }
};

} // namespace Velnor::Proc
