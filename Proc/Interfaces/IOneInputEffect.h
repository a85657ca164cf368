#pragma once

#include "Core/Exception.h"
#include "Proc/Interfaces/IEffect.h"

#include <stdexcept>
#include <string_view>

namespace Velnor::Proc {

/// An effect on one picture.
class VELNOR_API IOneInputEffect : public virtual IEffect {
public:
    /// Processes the picture: in place, or by putting another one into the handle. When it throws, handle and picture
    /// are as they were.
    virtual void ProcessData(DataHandle& data) = 0;

    /// Hands the one element to the typed entry. Throws std::logic_error "invalid data count" for another number.
    DataHandle ProcessData(std::vector<DataHandle> const& inputs) override {
        if (inputs.size() != 1) boost::throw_exception(std::logic_error("invalid data count"), VELNOR_LOCATION);
        DataHandle data = inputs[0];
        ProcessData(data);
        return data;
    }
};

class VELNOR_API IOneInputEffectVideo : public WithProgress<IOneInputEffect> {
public:
    static constexpr std::string_view CLASS_NAME = "IOneInputEffectVideo";
};

} // namespace Velnor::Proc
