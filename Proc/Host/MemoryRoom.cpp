#include "Proc/Host/MemoryRoom.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <fstream>
#include <limits>
#include <new>
#include <string>

namespace Velnor::Proc {
namespace {

constexpr std::uint64_t UNLIMITED = std::numeric_limits<std::uint64_t>::max();

/// The number in a file of the system; unlimited where there is none.
std::uint64_t ReadLimit(std::string const& file) {
    std::uint64_t limit = UNLIMITED;
    return std::ifstream(file) >> limit ? limit : UNLIMITED;
}

/// Of the control group that the process is in, as it sees itself: from within a container its own group is the root.
std::uint64_t GetGroupLimit() {
    return std::min(ReadLimit("/sys/fs/cgroup/memory.max"), ReadLimit("/sys/fs/cgroup/memory/memory.limit_in_bytes"));
}

std::uint64_t GetResourceLimit(auto resource) { // An enumerator or a number, as the system likes.
    rlimit limit{};
    bool const isLimited = getrlimit(resource, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
    return isLimited ? limit.rlim_cur : UNLIMITED;
}

} // namespace

std::uint64_t GetMemorySize() {
    long const pages = sysconf(_SC_PHYS_PAGES);
    long const pageBytes = sysconf(_SC_PAGESIZE);
    std::uint64_t const machine = pages > 0 && pageBytes > 0
                                      ? static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageBytes)
                                      : UNLIMITED;
    return std::min({machine, GetGroupLimit(), GetResourceLimit(RLIMIT_AS), GetResourceLimit(RLIMIT_DATA)});
}

bool HasRoom(std::uint64_t bytes) {
    if (bytes == 0) return true;
    // Writable, so that it counts for every limit; no page of it is ever touched.
    void* const room = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (room == MAP_FAILED) return false;
    munmap(room, bytes);
    return true;
}

void RequireRoom(std::uint64_t bytes) {
    if (!HasRoom(bytes)) throw std::bad_alloc();
}

bool IsAboutMemory(std::string_view complaint, std::uint64_t bytes) {
    // In the words of libvips, libjpeg, libtiff, libheif, OpenCV, ImageMagick, GLib and the C library.
    constexpr std::array<std::string_view, 7> SIGNS{"out of memory",
                                                    "insufficient memory",
                                                    "not enough memory",
                                                    "memory allocation",
                                                    "allocate",
                                                    "creating thread",
                                                    "resource temporarily unavailable"};
    std::string text(complaint);
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    bool const saysSo =
        std::ranges::any_of(SIGNS, [&](std::string_view sign) { return text.find(sign) != std::string::npos; });
    return saysSo || !HasRoom(bytes);
}

} // namespace Velnor::Proc
