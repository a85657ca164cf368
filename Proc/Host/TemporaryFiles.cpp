#include "Proc/Host/TemporaryFiles.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <ctime>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace Velnor::Proc {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view PREFIX = ".velnor-";
constexpr std::string_view SUFFIX = ".tmp";

std::string GetMachine() {
    std::array<char, 256> name{};
    if (gethostname(name.data(), name.size() - 1) != 0) return "unknown";
    std::string machine = name.data();
    std::ranges::replace(machine, '/', '_');
    return machine;
}

/// The process in "PROCESS-COUNT".
std::optional<pid_t> ParseProcess(std::string_view text) {
    pid_t process = 0;
    unsigned count = 0;
    char const* const end = text.data() + text.size();
    auto const first = std::from_chars(text.data(), end, process);
    if (first.ec != std::errc() || first.ptr == end || *first.ptr != '-') return std::nullopt;
    auto const second = std::from_chars(first.ptr + 1, end, count);
    return second.ec == std::errc() && second.ptr == end ? std::optional(process) : std::nullopt;
}

bool IsOld(struct stat const& status) {
    constexpr std::time_t DAY = 24 * 60 * 60;
    return std::time(nullptr) - status.st_mtime > DAY;
}

/// Whether a file that nobody has locked may be taken for a stray. A process number says nothing by itself, since it is
/// given anew; only files of before there were locks have nothing better.
bool MayBeStray(std::string_view name, struct stat const& status) {
    std::string_view rest = name.substr(PREFIX.size(), name.size() - PREFIX.size() - SUFFIX.size());
    if (std::optional<pid_t> const process = ParseProcess(rest)) return kill(*process, 0) != 0 && errno == ESRCH;
    std::string const ours = GetMachine() + "-";
    bool const isOurs = rest.starts_with(ours) && ParseProcess(rest.substr(ours.size()));
    return isOurs || IsOld(status);
}

void RemoveIfStray(fs::path const& file) {
    int const descriptor = open(file.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return;
    struct stat opened {};
    struct stat named {};
    bool const isStray = fstat(descriptor, &opened) == 0 && S_ISREG(opened.st_mode) &&
                         MayBeStray(file.filename().native(), opened) && flock(descriptor, LOCK_EX | LOCK_NB) == 0;
    // The name may have come to another file while this one waited for its lock.
    if (isStray && lstat(file.c_str(), &named) == 0 && named.st_ino == opened.st_ino && named.st_dev == opened.st_dev)
        unlink(file.c_str());
    close(descriptor);
}

bool IsTemporaryName(std::string_view name) {
    return name.size() > PREFIX.size() + SUFFIX.size() && name.starts_with(PREFIX) && name.ends_with(SUFFIX);
}

/// Whether this is the first call with that folder.
bool IsNew(fs::path const& folder) {
    static std::mutex mutex;
    static std::set<fs::path> known;
    std::error_code error;
    fs::path const absolute = fs::absolute(folder, error);
    std::lock_guard const lock(mutex);
    return known.insert(absolute).second;
}

} // namespace

fs::path MakeTemporaryName(fs::path const& folder) {
    static std::atomic<unsigned> counter{0};
    return folder / (std::string(PREFIX) + GetMachine() + "-" + std::to_string(getpid()) + "-" +
                     std::to_string(counter++) + std::string(SUFFIX));
}

bool ClaimTemporary(int descriptor) {
    // Where the file system has no locks, nobody can take the file for a stray either.
    (void)flock(descriptor, LOCK_EX);
    struct stat status {};
    return fstat(descriptor, &status) == 0 && status.st_nlink > 0;
}

void RemoveStrays(fs::path const& folder) {
    if (!IsNew(folder)) return;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error))
        if (IsTemporaryName(at->path().filename().native())) RemoveIfStray(at->path());
}

} // namespace Velnor::Proc
