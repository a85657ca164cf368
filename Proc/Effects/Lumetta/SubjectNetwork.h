#pragma once

#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Effects/Lumetta/Kernels/Subject/SubjectMap.h"
#include "Proc/Interfaces/NetworkMissingException.h"
#include "Proc/Settings/SettingsEffectNeuralPredict.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Velnor::Proc {

/// Asks the host's neural prediction for the map of a picture's subject.
class SubjectNetwork {
public:
    explicit SubjectNetwork(intrusive_ptr<IOneInputEffectVideo> neuralPredict) : predictor(std::move(neuralPredict)) {}

    /// The network's first output, of its input's size; empty when its file is not there. Throws EffectException when
    /// it cannot be run, or gives another number of values.
    std::vector<float> Predict(DataHandle const& picture, SettingsEffectNeuralBase const& network) const {
        predictor->SetSettings(SettingsEffectNeuralPredict(network));
        DataHandle seen = picture;
        try {
            predictor->ProcessData(seen);
        } catch (NetworkMissingException const&) {
            return {};
        }
        std::vector<float> values =
            dynamic_cast<SettingsEffectNeuralPredict const&>(predictor->GetSettingsBase()).GetResult();
        FrameFormat const size = network.GetInputSize();
        if (values.size() != std::uint64_t{size.width} * size.height)
            VELNOR_THROW(EffectException, "The network " + network.GetModel() + " gives " +
                                              std::to_string(values.size()) + " values; a map of its input's size, " +
                                              std::to_string(size.width) + " x " + std::to_string(size.height) +
                                              ", is needed.");
        return values;
    }

private:
    intrusive_ptr<IOneInputEffectVideo> predictor;
};

} // namespace Velnor::Proc
