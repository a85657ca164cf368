#pragma once

#include "Proc/Interfaces/SettingsFields.h"
#include "Proc/Settings/SettingsEffectVideoGenerator.h"

namespace Velnor::Proc {

/// Settings of BlurBokeh.
class VELNOR_API SettingsEffectBlurBokeh final : public SettingsOf<SettingsEffectBlurBokeh> {
    VELNOR_SETTINGS(SettingsEffectBlurBokeh,
                    "Imitates the blur of a lens out of focus, with bright discs on highlights.")
    VELNOR_FIELD(double, Size, 0.05, "diameter of the aperture's image, of the picture's shorter side",
                 Range(0.01, 0.5))
    VELNOR_FIELD(double, BokehThreshold, 0.9, "samples of the aperture above it are amplified", Range(0, 1))
    VELNOR_FIELD(double, BokehGain, 1.0, "factor of those samples", Range(0, 10))
    VELNOR_FIELD(double, ImageThreshold, 0.93, "samples of the picture above it are amplified", Range(0, 1))
    VELNOR_FIELD(double, ImageGain, 1.8, "factor of those samples", Range(0, 10))
    VELNOR_FIELD(double, Threshold, 0.0, "from where between the dark and the bright levels on the blur shows",
                 Range(0, 1))
    VELNOR_FIELD(double, Strength, 1.0, "how much of the sharp picture gives way", Range(0, 1))
    VELNOR_FIELD(SettingsEffectVideoGenerator, Generator, {}, "the aperture")
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
