#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace Velnor::Proc {

/// The threads of one processing call: started once, given work in phases while the caller waits, joined at the end.
class WorkerTeam {
public:
    /// Starts so many threads. When one cannot be had, those before it do the work; throws std::system_error when there
    /// is none.
    explicit WorkerTeam(unsigned wanted);
    WorkerTeam(WorkerTeam const&) = delete;
    WorkerTeam& operator=(WorkerTeam const&) = delete;
    ~WorkerTeam();

    unsigned GetCount() const { return static_cast<unsigned>(threads.size()); }

    /// Does the work on the first so many workers, or on all if there are fewer; `worker` counts from 0. Returns, or
    /// throws what one of them threw first, when all have ended.
    void Run(unsigned workers, std::function<void(unsigned worker)> const& work);

    /// Does the work for every row of a picture; the workers take some rows at a time.
    void RunRows(std::uint32_t height, std::function<void(std::uint32_t y)> const& work);

private:
    void Serve(unsigned worker);
    void Do(unsigned worker) noexcept;

    std::mutex mutex;                                 ///< Guards all but the threads.
    std::unique_ptr<std::condition_variable[]> begun; ///< One a worker: a phase of two need not wake the others.
    std::condition_variable ended;
    std::function<void(unsigned)> const* work = nullptr; ///< Of the phase.
    std::vector<bool> isCalled;                          ///< By worker: has yet to begin the phase.
    unsigned left = 0;                                   ///< Who have yet to end it.
    bool isOver = false;
    std::exception_ptr error; ///< The first of the phase.
    std::vector<std::thread> threads;
};

} // namespace Velnor::Proc
