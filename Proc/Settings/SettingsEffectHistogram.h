#pragma once

#include "Proc/Settings/SettingsHistogramChannel.h"

namespace Velnor::Proc {

/// Settings of Histogram, and what it counted. The picture is changed only when the histogram is drawn on it.
class VELNOR_API SettingsEffectHistogram final : public SettingsOf<SettingsEffectHistogram> {
    VELNOR_SETTINGS(SettingsEffectHistogram, "Counts the levels of red, green, blue and luma, and can draw them.")
    VELNOR_FIELD(bool, Draw, false, "whether the histogram is drawn on the picture's lower right", Example("true"))
    VELNOR_FIELD(double, Size, 40.0, "width of the drawing", Unit("% of the picture's width"), Range(5, 100))
    VELNOR_FIELD(std::uint64_t, Pixels, 0, "pixels counted", Output())
    VELNOR_FIELD(SettingsHistogramChannel, Red, {}, "of red", Output())
    VELNOR_FIELD(SettingsHistogramChannel, Green, {}, "of green", Output())
    VELNOR_FIELD(SettingsHistogramChannel, Blue, {}, "of blue", Output())
    VELNOR_FIELD(SettingsHistogramChannel, Luma, {}, "of luma", Output())
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
