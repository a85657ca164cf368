#pragma once

#include "Proc/Effects/Kit/ByteTables.h"
#include "Proc/Effects/Lumetta/Kernels/Luma/Histogram.h"

namespace Velnor::Proc::Kernels {

/// The two levels between which a histogram holds all but its thin ends.
struct ClipPair {
    unsigned char low = 0;
    unsigned char high = 255;

    friend bool operator==(ClipPair const&, ClipPair const&) = default;
};

/// Walks in from both ends until at least `lowCount` (`highCount`) pixels lie behind. 0 stays at the very end.
ClipPair FindClipPair(Histogram const& histogram, std::uint64_t lowCount, std::uint64_t highCount);

/// Moves both ends half-way back: low / 2 and high + (255 - high) / 2.
ClipPair Soften(ClipPair const& pair);

Table IdentityTable();

/// (i - low) * 255 / (high - low), clamped, rounded half away from zero; the identity for an empty range.
Table StretchTable(ClipPair const& pair);

/// 255 * (i / 255)^exponent, rounded, clamped.
Table PowerTable(double exponent);

/// i * f, rounded, clamped, where f is 1 + 0.03 * steps; for negative steps 1 / (1 + 0.03 * -steps).
Table ExposureTable(int steps);

/// i + offset, clamped; any offset is taken.
Table OffsetTable(std::int64_t offset);

/// The table that does `first`, then `second`.
Table Then(Table const& first, Table const& second);

} // namespace Velnor::Proc::Kernels
