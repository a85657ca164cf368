#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of ColorReduce.
class VELNOR_API SettingsEffectColorReduce final : public SettingsOf<SettingsEffectColorReduce> {
    VELNOR_SETTINGS(SettingsEffectColorReduce, "Reduces the picture to a few colours of its own.")
    VELNOR_FIELD(int, Colors, 16, "number of colours", Range(2, 256), AcceptsRange())
    VELNOR_FIELD(bool, Dither, true, "whether the error of each pixel is spread over its neighbours")
    VELNOR_FIELD(int, Refinement, 8, "how often the colours are refined at most", Range(0, 50))
    VELNOR_FIELD(bool, Palette, true,
                 "whether the result is a palette picture, fully transparent or opaque; else it keeps its format")
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
