#include "Tools/velnor/Console.h"

#include "Tools/velnor/Failure.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace Velnor::Tool {
namespace {

/// Whether all was written; errno says why not.
bool WriteAll(int stream, std::string_view text) {
    while (!text.empty()) {
        ssize_t const written = ::write(stream, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool IsTerminal() {
    char const* const kind = std::getenv("TERM");
    return isatty(STDERR_FILENO) == 1 && kind != nullptr && std::strcmp(kind, "dumb") != 0;
}

/// The text cut to the terminal's width, at the border of a UTF-8 character: a line that wraps cannot be wiped.
std::string FitToWidth(std::string text) {
    winsize size{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || text.size() < size.ws_col) return text;
    std::size_t length = size.ws_col - 1U;
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) --length;
    text.resize(length);
    return text;
}

} // namespace

void PrepareConsole() {
    for (int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) != -1 || errno != EBADF) continue;
        // Opened the wrong way round, so that its use still fails. The lowest free number is the one that was closed.
        if (::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) < 0) std::_Exit(1);
    }
    std::signal(SIGPIPE, SIG_IGN);
}

void Print(std::string_view text) {
    if (WriteAll(STDOUT_FILENO, text) || errno == EPIPE) return;
    throw Failure(ExitCode::OutputFailed, std::string("standard output cannot be written: ") + std::strerror(errno));
}

void PrintError(std::string const& text) { PrintAside("velnor: " + ToOneLine(text) + "\n"); }

void PrintAside(std::string_view text) { static_cast<void>(WriteAll(STDERR_FILENO, text)); }

ProgressLine::ProgressLine(bool allowed) : isShown(allowed && IsTerminal()) {}

void ProgressLine::Show(std::string const& text) {
    if (!isShown) return;
    PrintAside("\r\x1b[K" + FitToWidth(ToOneLine(text)));
    isThere = true;
}

void ProgressLine::Clear() {
    if (isThere) PrintAside("\r\x1b[K");
    isThere = false;
}

} // namespace Velnor::Tool
