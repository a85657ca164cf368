#pragma once

#include "Core/Exception.h"
#include "Proc/Interfaces/IEffect.h"

#include <stdexcept>
#include <string_view>

namespace Velnor::Proc {

/// An effect on a picture with the help of a second one.
class VELNOR_API ITwoInputEffect : public virtual IEffect {
public:
    /// Processes the first picture, which is the result; the second is only read. When it throws, handle and pictures
    /// are as they were.
    virtual void ProcessData(DataHandle& first, ConstDataHandle const& second) = 0;

    /// Copies both handles, calls the typed entry and returns the first. Throws std::logic_error "invalid data count"
    /// for other than two elements.
    DataHandle ProcessData(std::vector<DataHandle> const& inputs) override {
        if (inputs.size() != 2) boost::throw_exception(std::logic_error("invalid data count"), VELNOR_LOCATION);
        DataHandle first = inputs[0];
        ConstDataHandle const second = inputs[1];
        ProcessData(first, second);
        return first;
    }
};

class VELNOR_API ITwoInputEffectVideo : public WithProgress<ITwoInputEffect> {
public:
    static constexpr std::string_view CLASS_NAME = "ITwoInputEffectVideo";
};

} // namespace Velnor::Proc
