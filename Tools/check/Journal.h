#pragma once

#include <string>

namespace Velnor::Proc::Check {

/// Is told where a check stands, and what it finds broken.
class Journal {
public:
    virtual ~Journal() = default;

    /// Before each step: the format, size and parameter at work, as "rgb24 3 x 5, strength=0". Whoever writes it down
    /// knows where a step was that ended the process.
    virtual void Begin(std::string const& where) = 0;

    /// The step that was begun last broke the promise.
    /// @param what  reads on after the place; without numbers of the step's own, so that like findings are counted
    virtual void Break(std::string const& what) = 0;

    void Require(bool holds, char const* otherwise) {
        if (!holds) Break(otherwise);
    }
};

} // namespace Velnor::Proc::Check
