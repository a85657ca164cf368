#pragma once

#include "Proc/Interfaces/SettingsFields.h"
#include "Proc/Settings/SettingsEffectNeuralBase.h"

namespace Velnor::Proc {

/// Settings of the neural prediction, and its result: the network's output, flattened. The picture is not changed.
/// Without a smallest side the network gets the picture stretched to its input size. A smallest side of n cells keeps
/// the picture's shape: a cell is a sixteenth of the shorter side of the input size, so that of 64 x 64 and 17 cells a
/// picture of 3:2 is handed over as 102 x 68. Only a network that takes any size can be run so; one with a fixed input
/// says what it misses. A picture more than four times as long as wide is handed over as four times.
class VELNOR_API SettingsEffectNeuralPredict final : public SettingsOf<SettingsEffectNeuralPredict> {
    VELNOR_SETTINGS(SettingsEffectNeuralPredict, "Runs a neural network on the picture and reports its scores.")
    VELNOR_FIELD(SettingsEffectNeuralBase, Neural, {}, "the network")
    VELNOR_FIELD(int, FixMin, 0,
                 "smallest side, in the network's cells, to which the input may be scaled; 0 scales to "
                 "the network's input size",
                 Range(0, 64), AcceptsFrom(0))
    VELNOR_FIELD(std::vector<float>, Result, {}, "the network's scores", Output())
    VELNOR_SETTINGS_END

    explicit SettingsEffectNeuralPredict(SettingsEffectNeuralBase const& neural) : valueNeural(neural) {}
};

} // namespace Velnor::Proc
