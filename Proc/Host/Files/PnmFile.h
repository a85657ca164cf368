#pragma once

#include "Proc/Host/Files/FileBytes.h"

#include <cstdint>
#include <optional>

namespace Velnor::Proc::Files {

/// How much there is of a PNM or PFM file, of which the file library takes what is missing for zeros, or refuses the
/// whole.
struct PnmExtent {
    std::uint64_t height = 0;
    std::uint64_t wholeRows = 0;    ///< At most the height.
    std::uint64_t missingBytes = 0; ///< Of samples in binary; 0 of those that are text.
};

/// Nothing where the header cannot be followed. Text is read to the last sample, all else not beyond the header.
std::optional<PnmExtent> MeasurePnm(FileBytes const& file);

} // namespace Velnor::Proc::Files
