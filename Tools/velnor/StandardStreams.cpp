#include "Tools/velnor/StandardStreams.h"

#include "Tools/velnor/Console.h"
#include "Tools/velnor/Failure.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>
#include <vector>

namespace Velnor::Tool {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t CHUNK = 1U << 20;

std::string DescribeError() { return std::generic_category().message(errno); }

/// Reads on until the buffer is full or the stream ends.
std::size_t Fill(std::vector<char>& buffer) {
    std::size_t count = 0;
    while (count < buffer.size()) {
        ssize_t const got = ::read(STDIN_FILENO, buffer.data() + count, buffer.size() - count);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) throw Failure(ExitCode::InputFailed, "standard input cannot be read: " + DescribeError());
        if (got == 0) break;
        count += static_cast<std::size_t>(got);
    }
    return count;
}

/// More than this is no photograph within the limit, and would only fill the memory.
std::uint64_t GetLimit(Proc::ReadOptions const& options) {
    constexpr std::uint64_t LARGEST_PIXEL = 8; // Four samples of 16 bits.
    constexpr std::uint64_t METADATA = 64U << 20;
    auto const memory =
        static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    return std::min(options.maxPixels * LARGEST_PIXEL + METADATA, memory / 4);
}

/// Standard input to its end in a file of memory, since decoders seek. Its number; the file stays open.
int TakeStandardInput(Proc::ReadOptions const& options) {
    int const file = memfd_create("standard-input", MFD_CLOEXEC);
    if (file < 0) throw Failure(ExitCode::InputFailed, "standard input cannot be kept: " + DescribeError());
    std::vector<char> buffer(CHUNK);
    std::uint64_t rest = GetLimit(options);
    for (std::size_t count = Fill(buffer); count > 0; count = Fill(buffer)) {
        bool const fits = count <= rest;
        if (fits && ::write(file, buffer.data(), count) == static_cast<ssize_t>(count)) {
            rest -= count;
            continue;
        }
        close(file);
        throw Failure(ExitCode::OverLimit, fits ? "there is not enough memory for what standard input holds"
                                                : "standard input holds more than a photograph within the limits can");
    }
    return file;
}

} // namespace

std::string NamePhoto(fs::path const& photo) { return photo == STANDARD_STREAM ? "standard input" : photo.string(); }

Proc::LoadedPicture ReadPhoto(fs::path const& photo, Proc::IEffectContext& context, Proc::ReadOptions const& options) {
    if (photo != STANDARD_STREAM) return Proc::ReadPicture(photo, context, options);
    static int const input = TakeStandardInput(options); // Tried anew when it throws.
    std::string const file = "/proc/self/fd/" + std::to_string(input);
    try {
        return Proc::ReadPicture(file, context, options);
    } catch (Proc::FileException const&) {
        Report report = ReportCurrentException();
        if (std::size_t const at = report.text.find(file); at != std::string::npos)
            report.text.replace(at, file.size(), NamePhoto(photo));
        throw Failure(report.code, report.text);
    }
}

void RequireStandardOutput(std::string const& format) {
    if (format.empty())
        throw WrongCall("-o - writes to standard output; --to FORMAT says in which format, as in --to png");
    try {
        Proc::GetWritableFormats("picture." + format);
    } catch (Proc::FileOutputException const&) {
        std::string const text = ReportCurrentException().text;
        throw WrongCall("--to " + format + text.substr(std::min(text.find(": "), text.size())));
    }
    if (isatty(STDOUT_FILENO) == 1) throw WrongCall("-o - would write a picture to the terminal; send it to a command");
}

StandardOutput::StandardOutput(std::string const& format)
    : file("standard output." + format), descriptor(memfd_create("standard-output", MFD_CLOEXEC)) {
    if (descriptor < 0) throw Failure(ExitCode::OutputFailed, "standard output cannot be prepared: " + DescribeError());
}

StandardOutput::~StandardOutput() { close(descriptor); }

void StandardOutput::Print() const {
    std::vector<char> buffer(CHUNK);
    off_t at = 0;
    for (;;) {
        ssize_t const got = pread(descriptor, buffer.data(), buffer.size(), at);
        if (got < 0) throw Failure(ExitCode::OutputFailed, "standard output cannot be prepared: " + DescribeError());
        if (got == 0) return;
        Tool::Print({buffer.data(), static_cast<std::size_t>(got)});
        at += got;
    }
}

} // namespace Velnor::Tool
