#include "Tools/velnor/MemoryBudget.h"

#include <chrono>
#include <utility>

namespace Velnor::Tool {

MemoryBudget::MemoryBudget(std::uint64_t totalBytes, std::function<std::uint64_t()> kept,
                           std::function<void()> releaseKept)
    : total(totalBytes), getKept(std::move(kept)), release(std::move(releaseKept)) {}

/// The caller holds the lock.
void MemoryBudget::MakeRoom() const {
    if (held + getKept() > total) release();
}

void MemoryBudget::Share::Take(std::uint64_t needed, Core::IProgressController const& controller) {
    constexpr std::chrono::milliseconds BETWEEN_LOOKS{50}; // Nobody calls when a stop is requested.
    std::unique_lock lock(budget.mutex);
    std::uint64_t const ticket = budget.nextTicket++;
    auto const isNext = [&] { return ticket == budget.served && budget.Fits(needed); };
    while (!isNext() && !controller.IsStopRequested()) budget.changed.wait_for(lock, BETWEEN_LOOKS);
    // Who gives up leaves the line too; those between are called before, since they give up as well.
    while (ticket != budget.served) budget.changed.wait_for(lock, BETWEEN_LOOKS);
    ++budget.served;
    ++budget.sharesCount;
    budget.held += needed;
    bytes = needed;
    isHeld = true;
    budget.MakeRoom();
    budget.changed.notify_all();
}

void MemoryBudget::Share::Raise(std::uint64_t needed) {
    if (!isHeld || needed <= bytes) return;
    std::lock_guard const lock(budget.mutex);
    budget.held += needed - bytes;
    bytes = needed;
}

MemoryBudget::Share::~Share() {
    if (!isHeld) return;
    std::lock_guard const lock(budget.mutex);
    budget.held -= bytes;
    --budget.sharesCount;
    budget.changed.notify_all();
}

} // namespace Velnor::Tool
