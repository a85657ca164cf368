#include "Proc/Host/NeededLibraries.h"

#include "Proc/Interfaces/ProcException.h"

#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <system_error>

namespace Velnor::Proc {
namespace {

using Header = ElfW(Ehdr);
using Segment = ElfW(Phdr);
using Entry = ElfW(Dyn);

[[noreturn]] void Fail(std::string const& reason) { VELNOR_THROW(ProcException, reason); }
[[noreturn]] void FailBySystem() { Fail("it cannot be read: " + std::generic_category().message(errno) + "."); }
[[noreturn]] void FailByDamage() { Fail("it is damaged, or no shared library."); }

class Descriptor {
public:
    explicit Descriptor(std::filesystem::path const& file) : number(open(file.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (number < 0) FailBySystem();
    }
    ~Descriptor() { close(number); }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    int const number;
};

/// A file that is not trusted: what it says about places and sizes is held against its own size.
class Content {
public:
    explicit Content(std::filesystem::path const& path) : file(path) {
        struct stat status {};
        if (fstat(file.number, &status) != 0) FailBySystem();
        if (!S_ISREG(status.st_mode)) Fail(S_ISDIR(status.st_mode) ? "it is a directory." : "it is no regular file.");
        size = static_cast<std::uint64_t>(status.st_size);
    }

    template <class Item>
    std::vector<Item> Read(std::uint64_t offset, std::uint64_t count) const {
        if (offset > size || count > (size - offset) / sizeof(Item)) FailByDamage();
        std::vector<Item> items(static_cast<std::size_t>(count));
        std::size_t const bytes = items.size() * sizeof(Item);
        ssize_t const got = pread(file.number, items.data(), bytes, static_cast<off_t>(offset));
        if (got < 0) FailBySystem();
        if (static_cast<std::size_t>(got) != bytes) FailByDamage(); // It became shorter meanwhile.
        return items;
    }

private:
    Descriptor const file;
    std::uint64_t size = 0;
};

std::vector<Segment> ReadSegments(Content const& content) {
    constexpr unsigned char CLASS = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
    constexpr unsigned char ORDER = std::endian::native == std::endian::little ? ELFDATA2LSB : ELFDATA2MSB;
    auto const identity = content.Read<unsigned char>(0, EI_NIDENT);
    if (std::memcmp(identity.data(), ELFMAG, SELFMAG) != 0) Fail("it is no shared library.");
    if (identity[EI_CLASS] != CLASS || identity[EI_DATA] != ORDER) Fail("it is a library for another machine.");
    Header const header = content.Read<Header>(0, 1).front();
    if (header.e_type != ET_DYN || header.e_phentsize != sizeof(Segment)) Fail("it is no shared library.");
    return content.Read<Segment>(header.e_phoff, header.e_phnum);
}

std::vector<Entry> ReadDynamicSection(Content const& content, std::vector<Segment> const& segments) {
    auto const found = std::ranges::find(segments, ElfW(Word){PT_DYNAMIC}, &Segment::p_type);
    if (found == segments.end()) Fail("it is no shared library.");
    std::vector<Entry> entries = content.Read<Entry>(found->p_offset, found->p_filesz / sizeof(Entry));
    entries.erase(std::ranges::find(entries, DT_NULL, &Entry::d_tag), entries.end());
    return entries;
}

/// 0 where there is none.
std::uint64_t GetValue(std::vector<Entry> const& entries, std::int64_t tag) {
    auto const found = std::ranges::find(entries, tag, &Entry::d_tag);
    return found == entries.end() ? 0 : found->d_un.d_val;
}

/// Where in the file that lies which the loader puts at an address.
std::uint64_t FindOffset(std::vector<Segment> const& segments, std::uint64_t address) {
    for (Segment const& segment : segments)
        if (segment.p_type == PT_LOAD && address >= segment.p_vaddr && address - segment.p_vaddr < segment.p_filesz)
            return segment.p_offset + (address - segment.p_vaddr);
    FailByDamage();
}

} // namespace

std::vector<std::string> ReadNeededLibraries(std::filesystem::path const& file) {
    Content const content(file);
    std::vector<Segment> const segments = ReadSegments(content);
    std::vector<Entry> const entries = ReadDynamicSection(content, segments);
    std::uint64_t const namesPlace = FindOffset(segments, GetValue(entries, DT_STRTAB));
    std::vector<char> const names = content.Read<char>(namesPlace, GetValue(entries, DT_STRSZ));
    std::vector<std::string> needed;
    for (Entry const& entry : entries) {
        if (entry.d_tag != DT_NEEDED) continue;
        if (entry.d_un.d_val >= names.size()) FailByDamage();
        auto const begin = names.begin() + static_cast<std::ptrdiff_t>(entry.d_un.d_val);
        auto const end = std::find(begin, names.end(), '\0');
        if (end == names.end()) FailByDamage();
        needed.emplace_back(begin, end);
    }
    return needed;
}

} // namespace Velnor::Proc
