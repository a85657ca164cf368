#pragma once

// A factory and an allocator in front of the host's, which count what an effect asks of them and fail at one of the
// calls.

#include "Proc/Interfaces/IEffectContext.h"
#include "Proc/Interfaces/IEffectFactory.h"

namespace Velnor::Proc::Check {

/// Counts the calls that an effect makes: each creation, configuration and run of a sub-effect, and each picture.
struct Trouble {
    int calls = 0;
    int failAt = 0; ///< The call that fails; 0 for none.

    bool IsDue() { return ++calls == failAt; }
    void Pass() {
        if (IsDue()) Fail();
    }
    [[noreturn]] void Fail() const; ///< Throws ProcException.
};

/// Both refer to the trouble, which must outlive them and what they make. A sub-effect that fails has spoiled the
/// picture that it was given, as one may. A face detector finds a face in every picture.
FactoryHandle MakeFailingFactory(FactoryHandle const& real, Trouble& trouble);
ContextHandle MakeFailingContext(ContextHandle const& real, Trouble& trouble);

} // namespace Velnor::Proc::Check
