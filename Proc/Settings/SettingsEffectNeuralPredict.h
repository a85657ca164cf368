#pragma once

#include "Proc/Interfaces/SettingsFields.h"
#include "Proc/Settings/SettingsEffectNeuralBase.h"

namespace Velnor::Proc {

/// Settings of the neural prediction, and its result.
class VELNOR_API SettingsEffectNeuralPredict final : public SettingsOf<SettingsEffectNeuralPredict> {
    VELNOR_SETTINGS(SettingsEffectNeuralPredict, "Runs a neural network on the picture and reports its scores.")
    VELNOR_FIELD(SettingsEffectNeuralBase, Neural, {}, "the network")
    VELNOR_FIELD(int, FixMin, 0,
                 "smallest side, in the network's cells, to which the input may be scaled; 0 scales to "
                 "the network's input size",
                 Range(0, 64))
    VELNOR_FIELD(std::vector<float>, Result, {}, "the network's scores", Output())
    VELNOR_SETTINGS_END

    explicit SettingsEffectNeuralPredict(SettingsEffectNeuralBase const& neural) : valueNeural(neural) {}
};

} // namespace Velnor::Proc
