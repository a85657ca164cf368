#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the segmentation by strokes. Values are compared and written as bytes: the low 8 bits count.
class VELNOR_API SettingsEffectGrabCutSegmentation final : public SettingsOf<SettingsEffectGrabCutSegmentation> {
    VELNOR_SETTINGS(SettingsEffectGrabCutSegmentation,
                    "Separates an object from its background, starting from strokes on both.")
    static constexpr std::array PICTURES{PictureRole::Photograph, PictureRole::Mask};
    VELNOR_FIELD(int, Foreground, 255, "value of the strokes on the object, and of the object in the result",
                 Range(0, 255))
    VELNOR_FIELD(int, Background, 128, "value of the strokes on the background, and of the background in the result",
                 Range(0, 255))
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
