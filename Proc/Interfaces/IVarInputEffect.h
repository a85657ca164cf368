#pragma once

#include "Proc/Interfaces/IEffect.h"

#include <string_view>

namespace Velnor::Proc {

/// An effect on any number of pictures.
class VELNOR_API IVarInputEffect : public virtual IEffect {
public:
    /// Returns the result; null when the settings are empty, or when it puts several results in the inputs' place.
    virtual DataHandle Process(std::vector<DataHandle> const& inputs) = 0;

    DataHandle ProcessData(std::vector<DataHandle> const& inputs) override { return Process(inputs); }
};

class VELNOR_API IVarInputEffectVideo : public WithProgress<IVarInputEffect> {
public:
    static constexpr std::string_view CLASS_NAME = "IVarInputEffectVideo";
};

} // namespace Velnor::Proc
