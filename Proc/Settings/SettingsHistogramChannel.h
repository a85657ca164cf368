#pragma once

#include "Proc/Interfaces/SettingsFields.h"

#include <cstdint>
#include <vector>

namespace Velnor::Proc {

/// What Histogram found in one channel: levels are 0 to 255, parts of the picture are in percent.
class VELNOR_API SettingsHistogramChannel final : public SettingsOf<SettingsHistogramChannel> {
    VELNOR_SETTINGS(SettingsHistogramChannel, "Holds the distribution of one channel of a picture.")
    VELNOR_FIELD(double, Mean, 0.0, "mean level", Output())
    VELNOR_FIELD(double, Deviation, 0.0, "standard deviation of the levels", Output())
    VELNOR_FIELD(int, Low, 0, "lowest level that occurs", Output())
    VELNOR_FIELD(int, Percentile1, 0, "level that 1 % of the pixels do not exceed", Output())
    VELNOR_FIELD(int, Percentile25, 0, "level that 25 % of the pixels do not exceed", Output())
    VELNOR_FIELD(int, Median, 0, "level that half of the pixels do not exceed", Output())
    VELNOR_FIELD(int, Percentile75, 0, "level that 75 % of the pixels do not exceed", Output())
    VELNOR_FIELD(int, Percentile99, 0, "level that 99 % of the pixels do not exceed", Output())
    VELNOR_FIELD(int, High, 0, "highest level that occurs", Output())
    VELNOR_FIELD(double, ClippedLow, 0.0, "part of the pixels at level 0", Unit("%"), Output())
    VELNOR_FIELD(double, ClippedHigh, 0.0, "part of the pixels at level 255", Unit("%"), Output())
    VELNOR_FIELD(std::vector<std::uint64_t>, Counts, {}, "pixels at each of the 256 levels", Output())
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
