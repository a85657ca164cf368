#pragma once

#include "Proc/Host/PictureFile.h"

#include <cstdint>

namespace Velnor::Tool {

/// How photographs are read and written.
struct FileOptions {
    int quality = 90;
    double maxMegapixels = 512;
    double maxMemory = 0;    ///< Megabytes; 0: half of what there is.
    double maxExpansion = 0; ///< 0: by the kind of file.
    bool replace = false;
    bool acceptDamaged = false;
    Proc::Strip strip = Proc::Strip::None;
    bool keepTimes = false;

    Proc::ReadOptions ForReading() const {
        return {.maxPixels = static_cast<std::uint64_t>(maxMegapixels * 1e6),
                .acceptDamaged = acceptDamaged,
                .maxMemory = static_cast<std::uint64_t>(maxMemory * 1e6),
                .maxExpansion = maxExpansion};
    }
    Proc::WriteOptions ForWriting() const { return {quality, replace, strip, keepTimes}; }
};

} // namespace Velnor::Tool
