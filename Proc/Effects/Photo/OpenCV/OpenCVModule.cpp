// The module of the effects on OpenCV.
#include "Proc/Effects/Photo/EffectModule.h"
#include "Proc/Effects/Photo/OpenCV/CVEffects.h"

#include <array>
#include <string_view>
#include <utility>

extern "C" VELNOR_API Velnor::Proc::EffectFactoryFunction GetVelnorEffect(char const* name) {
    using namespace Velnor::Proc;
    // clang-format off: one a line, so that a new effect is one new line
    static constexpr std::array<std::pair<std::string_view, EffectFactoryFunction>, 7> EFFECTS{{
        {"Blur", &CreateBlur},
        {"CLAHE", &CreateCLAHE},
        {"GrabCutSegmentation", &CreateGrabCutSegmentation},
        {"MidEqualizer", &CreateMidEqualizer},
        {"Morphology", &CreateMorphology},
        {"Rotate", &CreateRotate},
        {"SmartBlur", &CreateSmartBlur},
    }};
    // clang-format on
    for (auto const& [known, create] : EFFECTS)
        if (known == name) return create;
    return nullptr;
}
