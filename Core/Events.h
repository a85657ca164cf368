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

/// A list of observers. It does not own them: an observer unregisters before it dies. All operations may be called from
/// any thread. Publications come one after another; a handler may itself register, unregister or publish. Once
/// UnregisterEventHandler has returned, the handler is not called any more: on another thread than the publishing one
/// it waits for the publication under way.
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

    /// Handlers that register during a publication are told from the next one on.
    template <class Call>
    void Publish(Call const& call) const {
        std::scoped_lock const lock(mutex);
        if (handlers.empty()) return;
        std::vector<Handler*> const current = handlers;
        ExecutePolicy::Execute(current, [&](Handler& handler) {
            if (std::find(handlers.begin(), handlers.end(), &handler) != handlers.end()) call(handler);
        });
    }

private:
    /// Recursive, because handlers run under it.
    mutable std::recursive_mutex mutex;
    std::vector<Handler*> handlers;
};

/// A source of events for one kind of observer, which are told synchronously.
template <class Handler>
class EventPublisher : public EventHandlerList<Handler, SyncExecutePolicy> {};

} // namespace Velnor::Core
