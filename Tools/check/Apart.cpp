#include "Tools/check/Apart.h"

#include "Core/Exception.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <system_error>

#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Velnor::Proc::Check {
namespace {

constexpr char const* DONE = "done";
constexpr char const* FAILED = "failed";
constexpr int GIVES_UP = 113; ///< The exit code of a process whose work threw.

[[noreturn]] void ThrowSystemError(char const* what) { throw std::system_error(errno, std::generic_category(), what); }

/// In the new process. The signals' own handling comes back, so that a death by one is seen as such.
[[noreturn]] void WorkApart(int pipe, std::function<void(Speech const&)> const& work) {
    for (int const signal : {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGTRAP}) std::signal(signal, SIG_DFL);
    rlimit const none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    std::set_terminate([] { std::abort(); });
    dup2(STDERR_FILENO, STDOUT_FILENO);
    Speech const speech(pipe);
    try {
        work(speech);
        speech.Say(DONE, "");
        _exit(0);
    } catch (...) {
        speech.Say(FAILED, DescribeCurrentException());
        _exit(GIVES_UP);
    }
}

class Child {
public:
    Child(pid_t child, int pipe) : process(child), stream(pipe) {}
    ~Child() {
        close(stream);
        if (process > 0) End();
    }
    Child(Child const&) = delete;
    Child& operator=(Child const&) = delete;

    /// Whether there is more to read within the time.
    bool Await(std::chrono::seconds silence) const {
        pollfd waiting{stream, POLLIN, 0};
        int const timeout = static_cast<int>(std::chrono::milliseconds(silence).count());
        int ready = 0;
        do ready = poll(&waiting, 1, timeout);
        while (ready < 0 && errno == EINTR);
        return ready > 0;
    }

    /// What has come; empty at the end.
    std::string Read() const {
        std::array<char, 4096> buffer{};
        ssize_t count = 0;
        do count = read(stream, buffer.data(), buffer.size());
        while (count < 0 && errno == EINTR);
        return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
    }

    /// Ends the process if it has not ended, and says how it did.
    std::string End() {
        int status = 0;
        // A process that has said all it will, or nothing for too long, is on its way out or stuck.
        constexpr int PATIENCE = 200;
        pid_t ended = 0;
        for (int i = 0; i < PATIENCE && ended == 0; ++i) {
            ended = waitpid(process, &status, WNOHANG);
            if (ended == 0) usleep(10000);
        }
        if (ended == 0) {
            kill(process, SIGKILL);
            waitpid(process, &status, 0);
        }
        process = 0;
        if (WIFSIGNALED(status))
            return "died by signal " + std::to_string(WTERMSIG(status)) + " (" + strsignal(WTERMSIG(status)) + ")";
        return "ended the process with exit code " + std::to_string(WEXITSTATUS(status));
    }

    void Kill() const { kill(process, SIGKILL); }

private:
    pid_t process;
    int const stream;
};

/// Splits what comes in pieces into lines.
class Lines {
public:
    template <class OnLine>
    void Take(std::string const& piece, OnLine const& onLine) {
        rest += piece;
        for (std::size_t end = rest.find('\n'); end != std::string::npos; end = rest.find('\n')) {
            std::string const line = rest.substr(0, end);
            rest.erase(0, end + 1);
            std::size_t const space = std::min(line.find(' '), line.size());
            onLine(line.substr(0, space), space < line.size() ? line.substr(space + 1) : "");
        }
    }

private:
    std::string rest;
};

Child Start(std::function<void(Speech const&)> const& work) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) ThrowSystemError("a plug-in cannot be checked: no pipe");
    pid_t const process = fork();
    if (process < 0) ThrowSystemError("a plug-in cannot be checked: no process");
    if (process == 0) {
        close(ends[0]);
        WorkApart(ends[1], work);
    }
    close(ends[1]);
    return {process, ends[0]};
}

} // namespace

void Speech::Say(std::string const& kind, std::string text) const {
    std::ranges::replace_if(
        text, [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
    std::string const line = kind + " " + text + "\n";
    for (std::size_t at = 0; at < line.size();) {
        ssize_t const written = write(stream, line.data() + at, line.size() - at);
        if (written < 0 && errno != EINTR) _exit(GIVES_UP); // Nobody listens any more.
        at += static_cast<std::size_t>(std::max<ssize_t>(written, 0));
    }
}

Ending RunApart(std::function<void(Speech const&)> const& work,
                std::function<void(std::string const& kind, std::string const& text)> const& onLine,
                std::chrono::seconds silence) {
    Child child = Start(work);
    Ending ending{Ending::Kind::Died, ""};
    Lines lines;
    while (child.Await(silence)) {
        std::string const piece = child.Read();
        if (piece.empty()) {
            std::string const how = child.End();
            if (ending.kind == Ending::Kind::Died) ending.text = how;
            return ending;
        }
        lines.Take(piece, [&](std::string const& kind, std::string const& text) {
            if (kind == DONE)
                ending.kind = Ending::Kind::Done;
            else if (kind == FAILED)
                ending = {Ending::Kind::Threw, text};
            else
                onLine(kind, text);
        });
    }
    child.Kill();
    return {Ending::Kind::Hung, "hangs: nothing for " + std::to_string(silence.count()) + " s"};
}

} // namespace Velnor::Proc::Check
