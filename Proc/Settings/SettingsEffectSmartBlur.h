#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the smart blur: it smooths surfaces and keeps edges, in luma and in chroma.
class VELNOR_API SettingsEffectSmartBlur final : public SettingsOf<SettingsEffectSmartBlur> {
    VELNOR_SETTINGS(SettingsEffectSmartBlur, "Smooths surfaces and keeps or sharpens edges.")
    VELNOR_FIELD(int, LumaRadius, 100, "reach of the blur in brightness", Unit("%"), Range(0, 100), AcceptsRange())
    VELNOR_FIELD(int, LumaBlur, 50, "strength of the blur in brightness", Unit("%"), Range(0, 100), AcceptsRange())
    VELNOR_FIELD(int, LumaSharpen, 0, "how much edges of brightness are sharpened", Unit("%"), Range(0, 100),
                 AcceptsRange())
    VELNOR_FIELD(int, ChromaRadius, 100, "reach of the blur in colour", Unit("%"), Range(0, 100), AcceptsRange())
    VELNOR_FIELD(int, ChromaBlur, 50, "strength of the blur in colour", Unit("%"), Range(0, 100), AcceptsRange())
    VELNOR_FIELD(int, ChromaSharpen, 0, "how much edges of colour are sharpened", Unit("%"), Range(0, 100),
                 AcceptsRange())
    VELNOR_SETTINGS_END

    bool IsEmpty() const override {
        return Settings::IsEmpty() ||
               (valueLumaBlur == 0 && valueLumaSharpen == 0 && valueChromaBlur == 0 && valueChromaSharpen == 0);
    }
};

} // namespace Velnor::Proc
