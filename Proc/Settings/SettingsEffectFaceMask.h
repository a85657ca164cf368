#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of FaceMask, and how many faces it found. What is chosen adds up.
class VELNOR_API SettingsEffectFaceMask final : public SettingsOf<SettingsEffectFaceMask> {
    VELNOR_SETTINGS(SettingsEffectFaceMask, "Makes a mask of the faces, or of parts of them.")
    VELNOR_FLAG(Face, false, "whether the mask has the whole face, from the chin to the hair")
    VELNOR_FLAG(Skin, true, "whether the mask has the face less eyes, brows and lips")
    VELNOR_FLAG(Eyes, false, "whether the mask has the eyes")
    VELNOR_FLAG(Lips, false, "whether the mask has the lips, with the mouth between them")
    VELNOR_FLAG(Brows, false, "whether the mask has the brows")
    VELNOR_FIELD(double, Feather, 4.0, "width of the soft edge", Unit("% of the face's width"), Range(0, 50),
                 AcceptsRange())
    VELNOR_FIELD(int, FacesFound, 0, "faces found in the last picture; without one the mask is empty", Output())
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
