#include "Proc/Effects/Lumetta/GridCut/WorkerTeam.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace Velnor::Proc {

WorkerTeam::WorkerTeam(unsigned wanted)
    : begun(std::make_unique<std::condition_variable[]>(wanted)), isCalled(wanted, false) {
    threads.reserve(wanted);
    try {
        for (unsigned worker = 0; worker < wanted; ++worker) threads.emplace_back([this, worker] { Serve(worker); });
    } catch (...) { // Fewer do it too.
        if (threads.empty()) throw;
    }
}

WorkerTeam::~WorkerTeam() {
    {
        std::scoped_lock const lock(mutex);
        isOver = true;
    }
    for (unsigned worker = 0; worker < GetCount(); ++worker) begun[worker].notify_one();
    for (std::thread& thread : threads) thread.join();
}

void WorkerTeam::Run(unsigned workers, std::function<void(unsigned worker)> const& phase) {
    unsigned const count = std::min(workers, GetCount());
    std::unique_lock lock(mutex);
    work = &phase;
    left = count;
    std::fill_n(isCalled.begin(), count, true);
    for (unsigned worker = 0; worker < count; ++worker) begun[worker].notify_one();
    ended.wait(lock, [this] { return left == 0; });
    if (error) std::rethrow_exception(std::exchange(error, nullptr));
}

void WorkerTeam::Serve(unsigned worker) {
    std::unique_lock lock(mutex);
    for (;;) {
        begun[worker].wait(lock, [&] { return isCalled[worker] || isOver; });
        if (isOver) return;
        isCalled[worker] = false;
        lock.unlock();
        Do(worker);
        lock.lock();
        if (--left == 0) ended.notify_one();
    }
}

void WorkerTeam::Do(unsigned worker) noexcept {
    try {
        (*work)(worker); // set before the call, and not again before this has ended
    } catch (...) {
        std::scoped_lock const lock(mutex);
        if (!error) error = std::current_exception();
    }
}

void WorkerTeam::RunRows(std::uint32_t height, std::function<void(std::uint32_t y)> const& row) {
    constexpr std::uint32_t ROWS =
        16; // so few that none waits long for the last, so many that taking them costs nothing
    std::atomic<std::uint32_t> next = 0;
    Run(GetCount(), [&](unsigned) {
        for (std::uint32_t first = next.fetch_add(ROWS); first < height; first = next.fetch_add(ROWS))
            for (std::uint32_t y = first; y < std::min(first + ROWS, height); ++y) row(y);
    });
}

} // namespace Velnor::Proc
