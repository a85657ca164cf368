#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the morphology with a disc.
class VELNOR_API SettingsEffectMorphology final : public SettingsOf<SettingsEffectMorphology> {
public:
    enum Operation : int {
        ERODE = 0,
        DILATE = 1,
        OPEN = 2,   ///< Erosion, then dilation.
        CLOSE = 3,  ///< Dilation, then erosion.
        SMOOTH = 4, ///< Opening, then closing.
    };

    VELNOR_SETTINGS(SettingsEffectMorphology, "Grows, shrinks or smooths bright areas.")
    VELNOR_FIELD(Operation, Operation, OPEN, "what is done")
    VELNOR_FIELD(int, Radius, 1, "radius of the disc", Unit("pixels"), Range(0, 100), AcceptsFrom(0))
    VELNOR_FIELD(int, Iterations, 1, "how often each erosion and dilation is done", Range(0, 100), AcceptsFrom(0))
    VELNOR_SETTINGS_END

    SettingsEffectMorphology(Operation operation, int radius) : valueOperation(operation), valueRadius(radius) {}

    bool IsEmpty() const override { return Settings::IsEmpty() || valueRadius == 0 || valueIterations == 0; }
};

template <>
struct EnumNames<SettingsEffectMorphology::Operation> {
    using S = SettingsEffectMorphology;
    static constexpr std::array<EnumName<S::Operation>, 5> VALUES{
        {{S::ERODE, "erode"}, {S::DILATE, "dilate"}, {S::OPEN, "open"}, {S::CLOSE, "close"}, {S::SMOOTH, "smooth"}}};
};

} // namespace Velnor::Proc
