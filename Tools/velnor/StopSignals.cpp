#include "Tools/velnor/StopSignals.h"

#include "Tools/velnor/ExitCodes.h"

#include <pthread.h>

#include <cstdlib>

namespace Velnor::Tool {
namespace {

/// Ends the watcher. Blocked, it is sent to that thread alone.
constexpr int END_OF_WATCH = SIGUSR1;

bool IsIgnored(int signal) {
    struct sigaction action {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void Watch(sigset_t awaited, intrusive_ptr<Core::IProgressController> const& controller) {
    for (;;) {
        int signal = 0;
        if (sigwait(&awaited, &signal) != 0 || signal == END_OF_WATCH) return;
        if (controller->IsStopRequested()) std::_Exit(static_cast<int>(ExitCode::Stopped));
        controller->RequestStop();
    }
}

} // namespace

StopSignals::StopSignals(intrusive_ptr<Core::IProgressController> const& controller) {
    sigemptyset(&awaited);
    sigaddset(&awaited, END_OF_WATCH);
    for (int signal : {SIGINT, SIGTERM, SIGHUP})
        if (!IsIgnored(signal)) sigaddset(&awaited, signal);
    pthread_sigmask(SIG_BLOCK, &awaited, &blockedBefore);
    watcher = std::thread(Watch, awaited, controller);
}

StopSignals::~StopSignals() {
    pthread_kill(watcher.native_handle(), END_OF_WATCH);
    watcher.join();
    // A signal that arrived after the watch is done with takes its usual course here.
    pthread_sigmask(SIG_SETMASK, &blockedBefore, nullptr);
}

} // namespace Velnor::Tool
