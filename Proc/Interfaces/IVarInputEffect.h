#pragma once

#include "Proc/Interfaces/IEffect.h"

#include <string_view>

namespace Velnor::Proc {

/// An effect on any number of pictures.
class VELNOR_API IVarInputEffect : public virtual IEffect {
public:
    /// Returns the result, null when the settings are empty. The inputs stay as they are, but for an effect whose result
    /// is several pictures: it returns null and puts them into the vector in the place of the inputs, so the vector
    /// itself must not be a constant.
    virtual intrusive_ptr<IData> Process(std::vector<intrusive_ptr<IData>> const& inputs) = 0;

    intrusive_ptr<IData> ProcessData(std::vector<intrusive_ptr<IData>> const& inputs) override {
        return Process(inputs);
    }
};

class VELNOR_API IVarInputEffectVideo : public WithProgress<IVarInputEffect> {
public:
    static constexpr std::string_view CLASS_NAME = "IVarInputEffectVideo";
};

} // namespace Velnor::Proc
