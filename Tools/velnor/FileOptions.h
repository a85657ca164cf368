#pragma once

#include "Proc/Host/PictureFile.h"

#include <cstdint>

namespace Velnor::Tool {

/// How photographs are read and written.
struct FileOptions {
    Proc::WriteOptions writing;
    double maxMegapixels = 512;
    double maxMemory = 0;    ///< Megabytes; 0: half of what there is.
    double maxExpansion = 0; ///< 0: by the kind of file.
    bool acceptDamaged = false;
    bool toSrgb = false;

    Proc::ReadOptions ForReading() const {
        return {.maxPixels = static_cast<std::uint64_t>(maxMegapixels * 1e6),
                .acceptDamaged = acceptDamaged,
                .maxMemory = static_cast<std::uint64_t>(maxMemory * 1e6),
                .maxExpansion = maxExpansion,
                .toSrgb = toSrgb};
    }
    Proc::WriteOptions const& ForWriting() const { return writing; }
};

} // namespace Velnor::Tool
