#include "Tools/velnor/Chain.h"

#include "Tools/velnor/EffectMemory.h"

#include <algorithm>

namespace Velnor::Tool {

Chain::Chain(std::vector<std::string> const& effects, EffectCatalogue const& catalogue,
             Proc::ReadOptions const& reading) {
    for (std::string const& effect : effects) steps.emplace_back(ParseEffectArgument(effect), catalogue, reading);
    joint = FindJoint();
}

/// After an effect that cuts photographs up, the pieces of each are joined, not the photographs.
std::size_t Chain::FindJoint() const {
    for (std::size_t i = 0; i < steps.size() && !steps[i].Cuts(); ++i)
        if (steps[i].Joins()) return i;
    return steps.size();
}

bool Chain::Cuts() const { return std::ranges::any_of(steps, &EffectStep::Cuts); }

bool Chain::HasResults() const { return std::ranges::any_of(steps, &EffectStep::HasResults); }

std::uint64_t Chain::GetBytesPerPixel(std::size_t firstStep) const {
    std::uint64_t most = WRITING_MEMORY;
    for (std::size_t i = firstStep; i < steps.size(); ++i) most = std::max(most, steps[i].GetBytesPerPixel());
    return most;
}

std::vector<std::string> Chain::GetFiles() const {
    std::vector<std::string> files;
    for (EffectStep const& step : steps) files.insert(files.end(), step.GetFiles().begin(), step.GetFiles().end());
    return files;
}

std::string Chain::GetStatistics() const {
    std::string text;
    for (EffectStep const& step : steps) text += step.GetStatistic().ToText();
    return text;
}

} // namespace Velnor::Tool
