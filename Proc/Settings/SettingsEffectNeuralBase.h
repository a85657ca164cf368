#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// What a neural network is and how a picture is handed to it. Part of the settings of the effects that run one.
class VELNOR_API SettingsEffectNeuralBase final : public SettingsOf<SettingsEffectNeuralBase> {
public:
    static constexpr std::uint32_t LARGEST_SIDE = 8192; ///< Of an input: more channels of float fill a memory.
    enum ChannelOrder : int { RGB = 0, BGR = 1 };
    enum Normalization : int {
        UNIFORM = 0,  ///< (level - mean) / scale, of the settings.
        IMAGENET = 1, ///< By each component's mean and deviation over the photographs of ImageNet.
    };

    VELNOR_SETTINGS(SettingsEffectNeuralBase, "A neural network and its input.")
    VELNOR_FIELD(std::string, Model, "",
                 "ONNX file of the network; a name without a folder is looked for among the "
                 "installed networks",
                 Example("horizon.onnx"))
    VELNOR_FIELD(FrameFormat, InputSize, FrameFormat::Square(64, 64), "size of the network's input", Unit("pixels"),
                 Example("64x64"), Accepts(1, LARGEST_SIDE))
    VELNOR_FIELD(ChannelOrder, ChannelOrder, RGB, "order of the components")
    VELNOR_FIELD(double, Mean, 127.5, "taken from each sample", Unit("levels"), Range(0, 255), AcceptsFinite())
    VELNOR_FIELD(double, Scale, 127.5, "what the difference is divided by", Unit("levels"), Range(0.001, 255),
                 AcceptsFiniteButZero())
    VELNOR_FIELD(Normalization, Normalization, UNIFORM,
                 "how levels become numbers: by mean and scale, or as networks are fed that were trained on ImageNet")
    VELNOR_SETTINGS_END
};

template <>
struct EnumNames<SettingsEffectNeuralBase::ChannelOrder> {
    using S = SettingsEffectNeuralBase;
    static constexpr std::array<EnumName<S::ChannelOrder>, 2> VALUES{{{S::RGB, "rgb"}, {S::BGR, "bgr"}}};
};

template <>
struct EnumNames<SettingsEffectNeuralBase::Normalization> {
    using S = SettingsEffectNeuralBase;
    static constexpr std::array<EnumName<S::Normalization>, 2> VALUES{
        {{S::UNIFORM, "uniform"}, {S::IMAGENET, "imagenet"}}};
};

} // namespace Velnor::Proc
