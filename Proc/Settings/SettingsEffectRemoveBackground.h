#pragma once

#include "Proc/Interfaces/SettingsFields.h"
#include "Proc/Settings/SettingsEffectNeuralBase.h"

namespace Velnor::Proc {

/// Settings of RemoveBackground.
class VELNOR_API SettingsEffectRemoveBackground final : public SettingsOf<SettingsEffectRemoveBackground> {
public:
    enum Result : int {
        CLEAR = 0,   ///< RGBA, the background clear.
        COLOR = 1,   ///< RGB24, the subject over a colour.
        PICTURE = 2, ///< RGB24, the subject over the last of the pictures.
        MASK = 3,    ///< GRAY8, white on the subject and black elsewhere.
    };

    /// How a network for salient objects such as u2netp.onnx is fed. None is named: it takes a second.
    static SettingsEffectNeuralBase DefaultNetwork() {
        return SettingsEffectNeuralBase()
            .SetInputSize(FrameFormat::Square(320, 320))
            .SetNormalization(SettingsEffectNeuralBase::IMAGENET);
    }

    VELNOR_SETTINGS(SettingsEffectRemoveBackground,
                    "Finds the subject, by strokes or without, and takes away what is behind it.")
    /// Strokes, a background or both may follow the photograph; the effect tells them apart.
    static constexpr std::array PICTURES{PictureRole::Photograph, PictureRole::Photograph, PictureRole::Photograph};
    VELNOR_FIELD(Result, Result, CLEAR, "what takes the background's place")
    VELNOR_FIELD(Color, Color, Color(255, 255, 255, 255), "colour behind the subject, with result color")
    VELNOR_FIELD(int, Foreground, 255, "value of the strokes on the subject", Range(1, 255), AcceptsRange())
    VELNOR_FIELD(int, Background, 128, "value of the strokes on the background", Range(1, 255), AcceptsRange())
    VELNOR_FIELD(double, Detail, 1.5, "width of the edge in which hair is looked for", Unit("% of the longer side"),
                 Range(0, 10), AcceptsRange())
    VELNOR_FIELD(double, Decontaminate, 100.0, "how much of the old background's colour is taken out of the edge",
                 Unit("%"), Range(0, 100), AcceptsRange())
    VELNOR_FIELD(
        SettingsEffectNeuralBase, Neural, DefaultNetwork(),
        "a network that finds the subject where no strokes are given, such as u2netp.onnx; its first output is a "
        "map of the subject, 0 to 1, of its input's size. Without a model colours and faces tell the subject")
    VELNOR_FIELD(double, Doubt, 0.0, "how much of the subject the network was unsure of; 15 and more want strokes",
                 Unit("%"), Output())
    VELNOR_SETTINGS_END
};

template <>
struct EnumNames<SettingsEffectRemoveBackground::Result> {
    using S = SettingsEffectRemoveBackground;
    static constexpr std::array<EnumName<S::Result>, 4> VALUES{
        {{S::CLEAR, "clear"}, {S::COLOR, "color"}, {S::PICTURE, "picture"}, {S::MASK, "mask"}}};
};

} // namespace Velnor::Proc
