#pragma once

#include "Core/Progress.h"

#include <csignal>
#include <thread>

namespace Velnor::Tool {

/// While it lives, Ctrl-C, SIGTERM and SIGHUP ask the controller to stop instead of ending the process; a second one
/// ends it at once. The signals are blocked and a thread waits for them, so that no code runs in a signal handler.
/// Make it before anything that starts threads, which inherit what is blocked. A signal that the caller of the process
/// had ignored stays so.
class StopSignals {
public:
    explicit StopSignals(intrusive_ptr<Core::IProgressController> const& controller);
    ~StopSignals();
    StopSignals(StopSignals const&) = delete;
    StopSignals& operator=(StopSignals const&) = delete;

private:
    sigset_t awaited;
    sigset_t blockedBefore;
    std::thread watcher;
};

} // namespace Velnor::Tool
