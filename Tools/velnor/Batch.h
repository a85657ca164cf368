#pragma once

#include "Tools/velnor/OutputNames.h"
#include "Tools/velnor/PhotoRun.h"

#include <condition_variable>
#include <exception>
#include <map>
#include <mutex>

namespace Velnor::Tool {

/// The photographs of a call, worked on by several threads. What is to be printed of them is, in their order.
class Batch {
public:
    /// @param jobs  how many photographs to work on at once, 1 or more
    Batch(Workshop const& workshop, PlanReader planReader, unsigned jobs);

    /// Returns Done; SomeFailed when at least one was done; the code of the first failure when none was; Stopped.
    /// Throws Failure (output) when the results or the journal cannot be written; the photographs under way are ended
    /// first.
    ExitCode Run();

private:
    void Work() noexcept;
    void WorkThrowing();
    std::optional<OutputPlan> Take();
    void Deliver(std::size_t index, PhotoReport report);
    void Print(PhotoReport const& photo);
    void PrintLines(PhotoReport const& photo) const;
    ExitCode Summarise() const;

    /// How far a job may be before the one whose results are next, so that few wait to be printed.
    static constexpr std::size_t MOST_WAITING = 256;

    Workshop const& shop;
    unsigned const jobsCount;
    std::mutex mutex; ///< Guards what follows.
    std::condition_variable printed;
    PlanReader plans;
    std::size_t taken = 0;
    std::size_t next = 1; ///< Whose results are printed next.
    std::map<std::size_t, PhotoReport> waiting;
    std::size_t done = 0;
    ExitCode firstFailure = ExitCode::Done;
    bool isStopped = false;
    std::exception_ptr error;
};

} // namespace Velnor::Tool
