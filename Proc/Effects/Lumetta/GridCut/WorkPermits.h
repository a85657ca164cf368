#pragma once

#include <condition_variable>
#include <mutex>

namespace Velnor::Proc {

/// So many threads may work at a time. A lock and a condition on purpose: the semaphore of libstdc++ 12 can lose a
/// wake-up and sleep for ever.
class WorkPermits {
public:
    explicit WorkPermits(unsigned permits) : free(permits) {}

    /// Holds one permit for its lifetime; waits for it.
    class Holder {
    public:
        explicit Holder(WorkPermits& shared) : permits(shared) {
            std::unique_lock lock(permits.mutex);
            permits.someFree.wait(lock, [this] { return permits.free > 0; });
            --permits.free;
        }
        Holder(Holder const&) = delete;
        Holder& operator=(Holder const&) = delete;
        ~Holder() {
            {
                std::scoped_lock const lock(permits.mutex);
                ++permits.free;
            }
            permits.someFree.notify_one();
        }

    private:
        WorkPermits& permits;
    };

private:
    std::mutex mutex;
    std::condition_variable someFree;
    unsigned free;
};

} // namespace Velnor::Proc
