#pragma once

#include "Core/Progress.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>

namespace Velnor::Tool {

/// Memory that photographs share which are worked on at once. Each says what it needs and waits until there is room, in
/// the order of asking; one that needs more than there is in all runs alone. Thread-safe.
class MemoryBudget {
public:
    /// @param total   bytes for the photographs together
    /// @param kept    tells how many bytes of those are kept for pictures to come, beside what photographs have
    /// @param release gives those back
    MemoryBudget(std::uint64_t total, std::function<std::uint64_t()> kept, std::function<void()> release);

    /// What one photograph has, from its first use to its end.
    class Share {
    public:
        explicit Share(MemoryBudget& memoryBudget) : budget(memoryBudget) {}
        ~Share();
        Share(Share const&) = delete;
        Share& operator=(Share const&) = delete;

        /// Waits until there are so many bytes, or until the controller is asked to stop. Once.
        void Take(std::uint64_t needed, Core::IProgressController const& controller);

        /// Has it be so many bytes if it is less. Does not wait, since two that wait for each other would for ever: who
        /// comes later waits the longer.
        void Raise(std::uint64_t needed);

    private:
        MemoryBudget& budget;
        std::uint64_t bytes = 0;
        bool isHeld = false;
    };

private:
    bool Fits(std::uint64_t bytes) const { return sharesCount == 0 || (held <= total && bytes <= total - held); }
    void MakeRoom() const;

    std::uint64_t const total;
    std::function<std::uint64_t()> const getKept;
    std::function<void()> const release;
    std::mutex mutex;
    std::condition_variable changed;
    std::uint64_t nextTicket = 0;
    std::uint64_t served = 0;
    std::uint64_t held = 0;
    std::size_t sharesCount = 0;
};

} // namespace Velnor::Tool
