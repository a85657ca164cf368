#pragma once

#include "Proc/Interfaces/SettingsFields.h"
#include "Proc/Settings/SettingsEffectNeuralBase.h"

namespace Velnor::Proc {

/// Settings of HorizonDetector, and its verdict.
class VELNOR_API SettingsEffectHorizonDetector final : public SettingsOf<SettingsEffectHorizonDetector> {
public:
    /// The network that is installed with the host, trained on drawn pictures alone. It was right on 96 % of 1,920
    /// drawn pictures that it never saw, on the four sample photographs, and on 17 of 19 wallpaper photographs: it
    /// overlooks the skyline of mountains near by.
    static SettingsEffectNeuralBase DefaultNetwork() { return SettingsEffectNeuralBase().SetModel("horizon.onnx"); }

    VELNOR_SETTINGS(SettingsEffectHorizonDetector, "Says whether the picture shows a horizon.")
    VELNOR_FIELD(SettingsEffectNeuralBase, Neural, DefaultNetwork(), "the network; its second score is the horizon's")
    VELNOR_FIELD_AS(HasHorizon, bool, HasHorizon, false, "whether there is a horizon", Output())
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
