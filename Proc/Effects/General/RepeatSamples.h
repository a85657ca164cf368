#pragma once

#include "Proc/Interfaces/Plane.h"

namespace Velnor::Proc {

/// Resizes a plane by taking the nearest sample: sample x of `target` is sample floor((x + 1/2) * from / to) of
/// `source`, in whole numbers, so that n times larger means blocks of exactly n x n samples. Both planes have groups of
/// `sampleBytes` bytes, 1 to 4.
void RepeatSamples(ConstPlane const& source, MutablePlane const& target, std::uint64_t sampleBytes);

} // namespace Velnor::Proc
