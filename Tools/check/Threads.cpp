// Threads that an effect starts. Those that the host or a library starts on its behalf are theirs to answer for, but
// none may be left when an effect has done its work.

#include "Tools/check/ImportedCalls.h"
#include "Tools/check/Promises.h"

#include <atomic>
#include <filesystem>
#include <iterator>
#include <utility>

#include <pthread.h>

namespace Velnor::Proc::Check {
namespace {

std::atomic<int> started = 0; ///< By the plug-in's own code.

/// In the place of pthread_create.
decltype(&pthread_create) createThread = nullptr;
int CountAndCreate(pthread_t* thread, pthread_attr_t const* attributes, void* (*routine)(void*),
                   void* argument) noexcept {
    ++started;
    return createThread(thread, attributes, routine, argument);
}

/// In the place of the member of std::thread that starts it, whose name and arguments are of the platform's C++: the
/// thread, its state by reference, and what makes sure that threads are linked.
using StartThread = void (*)(void* thread, void* state, void (*depend)());
constexpr char const* START_THREAD = "_ZNSt6thread15_M_start_threadE";
StartThread startThread = nullptr;
void CountAndStart(void* thread, void* state, void (*depend)()) {
    ++started;
    startThread(thread, state, depend);
}

template <class Function>
void Watch(std::filesystem::path const& plugin, char const* symbol, Function counting, Function& original) {
    if (original != nullptr) return; // Watched already.
    original = reinterpret_cast<Function>(RedirectImport(plugin, symbol, reinterpret_cast<void*>(counting)));
}

/// Large enough, at the highest level, for whatever a plug-in may cut into pieces. The host's own effects may.
std::pair<std::uint32_t, std::uint32_t> GetSize(Subject const& subject) {
    if (subject.GetFile().empty()) return {96, 70};
    return subject.GetLevel() > 2 ? std::pair(2048U, 1025U) : std::pair(640U, 480U);
}

/// Of this process.
std::ptrdiff_t CountThreads() {
    namespace fs = std::filesystem;
    return std::distance(fs::directory_iterator("/proc/self/task"), fs::directory_iterator());
}

} // namespace

void CheckThreads(Subject const& subject, Journal& journal) {
    if (!subject.GetFile().empty()) {
        Watch(subject.GetFile(), "pthread_create", &CountAndCreate, createThread);
        Watch(subject.GetFile(), START_THREAD, &CountAndStart, startThread);
    }
    auto const [width, height] = GetSize(subject);
    auto const effect = subject.Make(*subject.MakeTypicalSettings());
    std::ptrdiff_t threads = 0;
    for (int round = 0; round < 2; ++round) {
        journal.Begin(NameOf(PixFmt::RGB24, width, height));
        started = 0;
        threads = round == 0 ? 0 : CountThreads(); // Libraries of the host keep those of the first round.
        Try(*effect, subject.MakeInputs(PixFmt::RGB24, width, height), journal);
        journal.Require(started == 0, "starts threads of its own");
    }
    journal.Require(CountThreads() <= threads, "leaves threads behind");
}

} // namespace Velnor::Proc::Check
