#pragma once

#include "Proc/Host/PictureFile.h"

#include <cstdint>

namespace Velnor::Tool {

/// How photographs are read and written.
struct FileOptions {
    int quality = 90;
    double maxMegapixels = 512;
    bool replace = false;
    bool acceptDamaged = false;

    Proc::ReadOptions ForReading() const { return {static_cast<std::uint64_t>(maxMegapixels * 1e6), acceptDamaged}; }
    Proc::WriteOptions ForWriting() const { return {quality, replace}; }
};

} // namespace Velnor::Tool
