#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of Stitcher.
class VELNOR_API SettingsEffectStitcher final : public SettingsOf<SettingsEffectStitcher> {
    VELNOR_SETTINGS(SettingsEffectStitcher, "Puts the patches of a picture together again, each fading into the next.")
    VELNOR_FIELD(int, Width, 0, "width of the result; 0 is all of it", Unit("pixels"), Range(0, 1048576))
    VELNOR_FIELD(int, Height, 0, "height of the result; 0 is all of it", Unit("pixels"), Range(0, 1048576))
    VELNOR_FIELD(int, Columns, 0, "patches in a row, when they carry no place; 0 makes a square of them",
                 Range(0, 65536))
    VELNOR_FIELD(int, OverlapX, 0, "how far such a patch reaches into the one to its right", Unit("pixels"),
                 Range(-4096, 4095))
    VELNOR_FIELD(int, OverlapY, 0, "how far such a patch reaches into the one below it", Unit("pixels"),
                 Range(-4096, 4095))
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
