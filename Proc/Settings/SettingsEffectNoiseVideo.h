#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the noise.
class VELNOR_API SettingsEffectNoiseVideo final : public SettingsOf<SettingsEffectNoiseVideo> {
public:
    enum Distribution : int { GAUSSIAN = 0, UNIFORM = 1 };

    VELNOR_SETTINGS(SettingsEffectNoiseVideo, "Adds noise, such as the grain of film.")
    VELNOR_FIELD(double, Strength, 10.0, "standard deviation of the noise", Unit("levels"), Range(0, 128),
                 AcceptsFrom(0))
    VELNOR_FIELD(Distribution, Distribution, GAUSSIAN, "distribution of the noise")
    VELNOR_FIELD(double, GrainSize, 1.0, "size of the grain", Unit("pixels"), Range(1, 16), Accepts(1, 1000))
    VELNOR_FLAG(Monochrome, true, "whether the noise is grey; else each component has its own")
    VELNOR_FIELD(unsigned int, Seed, 1, "start of the random numbers: the same seed gives the same noise")
    VELNOR_SETTINGS_END

    bool IsEmpty() const override { return Settings::IsEmpty() || valueStrength == 0; }
};

template <>
struct EnumNames<SettingsEffectNoiseVideo::Distribution> {
    using S = SettingsEffectNoiseVideo;
    static constexpr std::array<EnumName<S::Distribution>, 2> VALUES{
        {{S::GAUSSIAN, "gaussian"}, {S::UNIFORM, "uniform"}}};
};

} // namespace Velnor::Proc
