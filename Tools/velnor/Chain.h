#pragma once

#include "Tools/velnor/EffectStep.h"

#include <deque>
#include <string>
#include <vector>

namespace Velnor::Tool {

/// The effects of a call in their order, for any number of photographs at once.
class Chain {
public:
    /// Throws what EffectStep throws.
    /// @param effects  as typed
    Chain(std::vector<std::string> const& effects, EffectCatalogue const& catalogue, Proc::ReadOptions const& reading);

    std::deque<EffectStep> const& GetSteps() const { return steps; }
    std::size_t GetJoint() const { return joint; } ///< The effect that joins the photographs; behind the last for none.
    bool JoinsPhotos() const { return joint < steps.size(); }
    bool Cuts() const;       ///< Whether a photograph may become several pictures.
    bool HasResults() const; ///< Whether an effect finds something out.

    /// Bytes for each pixel of the photograph that it takes from an effect on, writing included.
    std::uint64_t GetBytesPerPixel(std::size_t firstStep = 0) const;

    std::vector<std::string> GetFiles() const; ///< Of the effects' further pictures.
    std::string GetStatistics() const;

private:
    std::size_t FindJoint() const;

    std::deque<EffectStep> steps;
    std::size_t joint = 0;
};

} // namespace Velnor::Tool
