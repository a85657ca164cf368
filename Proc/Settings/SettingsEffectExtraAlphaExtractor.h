#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the extra alpha extractor.
class VELNOR_API SettingsEffectExtraAlphaExtractor final : public SettingsOf<SettingsEffectExtraAlphaExtractor> {
    VELNOR_SETTINGS(SettingsEffectExtraAlphaExtractor,
                    "Brings a mask to the resolution of a pixel format's chroma planes.")
    static constexpr std::array PICTURES{PictureRole::Mask};
    VELNOR_FIELD(PixFmt, PixelFormat, PixFmt::NONE, "format of the picture that the mask is for; none leaves it",
                 Example("yuv420p"))
    VELNOR_SETTINGS_END

    explicit SettingsEffectExtraAlphaExtractor(PixFmt format) : valuePixelFormat(format) {}
};

} // namespace Velnor::Proc
