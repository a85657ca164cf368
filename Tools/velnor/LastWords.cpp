#include "Tools/velnor/LastWords.h"

#include "Proc/Host/FatalError.h"
#include "Proc/Host/MemoryRoom.h"
#include "Tools/velnor/Console.h"
#include "Tools/velnor/Failure.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string_view>

namespace Velnor::Tool {
namespace {

/// A process that has crashed with less than this left has most likely crashed because of it.
constexpr std::uint64_t AMPLE = 256 << 20;

/// Everything here may run in a signal handler with no memory left: it allocates nothing.
[[noreturn]] void EndForMemory() {
    PrintAside("velnor: there is not enough memory\n");
    std::_Exit(static_cast<int>(ExitCode::OverLimit));
}

bool IsAboutAllocation(std::string_view reason) {
    for (char const* const sign : {"alloc", "memory", "thread"})
        if (reason.find(sign) != std::string_view::npos) return true;
    return !Proc::HasRoom(AMPLE);
}

void EndByLibrary(char const* reason) {
    std::string_view const text = reason == nullptr ? "" : reason;
    if (IsAboutAllocation(text)) EndForMemory();
    PrintAside("velnor: a library gave up: ");
    PrintAside(text.substr(0, text.find('\n')));
    PrintAside("\n");
    std::_Exit(static_cast<int>(ExitCode::OverLimit));
}

void EndBySignal(int signal) {
    if (!Proc::HasRoom(AMPLE)) EndForMemory();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

/// Where an exception met a destructor or a thread of a library.
[[noreturn]] void EndByException() {
    if (std::current_exception() == nullptr) std::abort();
    try {
        Report const report = ReportCurrentException();
        PrintError(report.text);
        std::_Exit(static_cast<int>(report.code));
    } catch (...) {
        EndForMemory();
    }
}

/// Handlers need a stack of their own: the usual way to run out of it is a library that fails to tell that memory ran
/// out, which takes memory, which fails...
void UseSpareStack() {
    alignas(64) static std::array<char, 1 << 16> memory;
    stack_t stack{};
    stack.ss_sp = memory.data();
    stack.ss_size = memory.size();
    sigaltstack(&stack, nullptr);
}

} // namespace

void PrepareLastWords() {
    UseSpareStack();
    struct sigaction action {};
    action.sa_handler = EndBySignal;
    action.sa_flags = SA_ONSTACK;
    for (int const signal : {SIGABRT, SIGBUS, SIGSEGV, SIGTRAP}) {
        struct sigaction before {};
        bool const isFree = sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_DFL;
        if (isFree) sigaction(signal, &action, nullptr); // A debugger's or sanitizer's own has more to say.
    }
    std::set_terminate(EndByException);
    Proc::SetFatalErrorHandler(EndByLibrary);
}

} // namespace Velnor::Tool
