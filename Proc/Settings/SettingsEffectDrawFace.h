#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of DrawFace, and how many faces it found.
class VELNOR_API SettingsEffectDrawFace final : public SettingsOf<SettingsEffectDrawFace> {
public:
    VELNOR_SETTINGS(SettingsEffectDrawFace, "Draws boxes, contours and landmarks of faces on the picture.")
    VELNOR_FLAG(Boxes, true, "whether the box of each face is drawn")
    VELNOR_FLAG(Contours, true, "whether jaw, brows, nose, eyes and lips are drawn")
    VELNOR_FLAG(Landmarks, false, "whether each of the 68 landmarks is drawn, as a dot")
    VELNOR_FIELD(Color, LineColor, Color(64, 255, 64, 255), "colour of the lines; its opacity is theirs")
    VELNOR_FIELD(double, LineWidth, 2.0, "width of the lines; dots are twice as wide", Unit("pixels"), Range(0.5, 100),
                 AcceptsRange())
    VELNOR_FIELD(int, FacesFound, 0, "faces found in the last picture; without one it is not changed", Output())
    VELNOR_SETTINGS_END

    bool IsEmpty() const override {
        return Settings::IsEmpty() || valueLineColor.GetOpacity() == 0 ||
               !(valueBoxes || valueContours || valueLandmarks);
    }
};

} // namespace Velnor::Proc
