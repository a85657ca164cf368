#pragma once

#include <string>
#include <vector>

namespace Velnor::Benchmarks {

/// A line of the closing table: how long `ours` took as a part of what `peer` took, in the same run.
struct Ratio {
    std::string ours;
    std::string peer;
    double goal = 0; ///< The most that is meant to be; 0 where there is no goal.
};

/// Adds a line; called while benchmarks are registered.
bool Compare(Ratio ratio);
std::vector<Ratio> const& GetRatios();

} // namespace Velnor::Benchmarks
