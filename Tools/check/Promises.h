#pragma once

#include "Tools/check/Subject.h"

#include <span>
#include <string_view>

namespace Velnor::Proc::Check {

/// Something that every effect keeps, and the check of it.
struct Promise {
    std::string_view name; ///< As people type and read it.
    std::string_view text; ///< What is promised.
    int level;             ///< 1 to 3: the lowest level at which it is checked.

    /// Tells the journal of each step and of what is broken. Throws what the effect throws where nothing may fail.
    void (*check)(Subject const& subject, Journal& journal);
};

/// In the order in which they are checked: what comes first is what the others stand on.
std::span<Promise const> GetPromises();

/// Why an effect of this project need not keep a promise; empty for all others.
std::string_view FindWaiver(RegisteredEffect const& effect, Promise const& promise);

void CheckRegistration(Subject const& subject, Journal& journal);
void CheckSettings(Subject const& subject, Journal& journal);
void CheckBypass(Subject const& subject, Journal& journal);
void CheckWrongInputs(Subject const& subject, Journal& journal);
void CheckFormats(Subject const& subject, Journal& journal);
void CheckRanges(Subject const& subject, Journal& journal);
void CheckSameness(Subject const& subject, Journal& journal);
void CheckIndependence(Subject const& subject, Journal& journal);
void CheckHiddenColours(Subject const& subject, Journal& journal);
void CheckFailures(Subject const& subject, Journal& journal);
void CheckStop(Subject const& subject, Journal& journal);
void CheckThreads(Subject const& subject, Journal& journal);
void CheckRandomCalls(Subject const& subject, Journal& journal);

} // namespace Velnor::Proc::Check
