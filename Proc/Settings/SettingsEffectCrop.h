#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the crop.
class VELNOR_API SettingsEffectCrop final : public SettingsOf<SettingsEffectCrop> {
    VELNOR_SETTINGS(SettingsEffectCrop, "Cuts margins off the picture.")
    VELNOR_FIELD(CropInfo, Margins, {}, "what is cut off: left, top, right, bottom", Unit("pixels"), Example("1,0,1,0"))
    VELNOR_SETTINGS_END

    explicit SettingsEffectCrop(CropInfo const& margins) : valueMargins(margins) {}

    bool IsEmpty() const override { return Settings::IsEmpty() || valueMargins == CropInfo(); }
};

} // namespace Velnor::Proc
