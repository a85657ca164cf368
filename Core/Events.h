#pragma once

#include <algorithm>
#include <mutex>
#include <vector>

namespace Velnor::Core {

/// Calls each handler on the publishing thread, in the order of registration, before the publication returns.
struct SyncExecutePolicy {
    template <class Handlers, class Call>
    static void Execute(Handlers const& handlers, Call const& call) {
        for (auto* handler : handlers) call(*handler);
    }
};

/// A list of observers. It does not own them: an observer unregisters before it dies. Registration is thread-safe; a
/// handler may register or unregister during a publication, which goes on over the list as it stood.
template <class Handler, class ExecutePolicy>
class EventHandlerList {
public:
    /// Registering a handler twice has it called once. Null is ignored.
    void RegisterEventHandler(Handler* handler) {
        std::scoped_lock const lock(mutex);
        if (handler != nullptr && std::find(handlers.begin(), handlers.end(), handler) == handlers.end())
            handlers.push_back(handler);
    }

    void UnregisterEventHandler(Handler* handler) {
        std::scoped_lock const lock(mutex);
        std::erase(handlers, handler);
    }

protected:
    ~EventHandlerList() = default;

    template <class Call>
    void Publish(Call const& call) const {
        std::vector<Handler*> current;
        {
            std::scoped_lock const lock(mutex);
            current = handlers;
        }
        ExecutePolicy::Execute(current, call);
    }

private:
    mutable std::mutex mutex;
    std::vector<Handler*> handlers;
};

/// A source of events for one kind of observer, which are told synchronously.
template <class Handler>
class EventPublisher : public EventHandlerList<Handler, SyncExecutePolicy> {};

} // namespace Velnor::Core
