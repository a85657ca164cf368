#include "Tools/check/ImportedCalls.h"

#include <cerrno>
#include <cstdint>
#include <span>
#include <system_error>

#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

namespace Velnor::Proc::Check {
namespace {

using Address = ElfW(Addr);
using Relocation = ElfW(Rela);

/// The tables of a loaded library in which the loader notes where imported functions are.
struct ImportTables {
    explicit ImportTables(link_map const& library) {
        for (ElfW(Dyn) const* entry = library.l_ld; entry->d_tag != DT_NULL; ++entry) Note(*entry);
        if (relocations != nullptr) all[0] = {relocations, relocationsBytes / sizeof(Relocation)};
        if (calls != nullptr) all[1] = {calls, callsBytes / sizeof(Relocation)};
    }

    char const* GetName(Relocation const& entry) const {
#if __ELF_NATIVE_CLASS == 64
        auto const index = ELF64_R_SYM(entry.r_info);
#else
        auto const index = ELF32_R_SYM(entry.r_info);
#endif
        return names + symbols[index].st_name;
    }

    std::span<Relocation const> all[2];

private:
    void Note(ElfW(Dyn) const& entry) {
        switch (entry.d_tag) {
        case DT_STRTAB:
            names = reinterpret_cast<char const*>(entry.d_un.d_ptr);
            break;
        case DT_SYMTAB:
            symbols = reinterpret_cast<ElfW(Sym) const*>(entry.d_un.d_ptr);
            break;
        case DT_RELA:
            relocations = reinterpret_cast<Relocation const*>(entry.d_un.d_ptr);
            break;
        case DT_RELASZ:
            relocationsBytes = entry.d_un.d_val;
            break;
        case DT_JMPREL:
            calls = reinterpret_cast<Relocation const*>(entry.d_un.d_ptr);
            break;
        case DT_PLTRELSZ:
            callsBytes = entry.d_un.d_val;
            break;
        default:
            break;
        }
    }

    char const* names = nullptr;
    ElfW(Sym) const* symbols = nullptr;
    Relocation const* relocations = nullptr;
    Relocation const* calls = nullptr;
    std::size_t relocationsBytes = 0;
    std::size_t callsBytes = 0;
};

/// The loader may have made the tables read-only once they were complete.
void* Exchange(void** place, void* replacement) {
    auto const page = static_cast<Address>(sysconf(_SC_PAGESIZE));
    auto* const start = reinterpret_cast<void*>(reinterpret_cast<Address>(place) / page * page);
    if (mprotect(start, page, PROT_READ | PROT_WRITE) != 0)
        throw std::system_error(errno, std::generic_category(), "the calls of a plug-in cannot be watched");
    void* const before = *place;
    *place = replacement;
    return before;
}

} // namespace

void* RedirectImport(std::filesystem::path const& library, std::string_view symbol, void* replacement) {
    void* const handle = dlopen(library.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    link_map* map = nullptr;
    if (handle == nullptr || dlinfo(handle, RTLD_DI_LINKMAP, &map) != 0) return nullptr;
    dlclose(handle); // It was loaded before, and stays so.
    ImportTables const tables(*map);
    for (std::span<Relocation const> const table : tables.all)
        for (Relocation const& entry : table)
            if (std::string_view(tables.GetName(entry)).starts_with(symbol))
                return Exchange(reinterpret_cast<void**>(map->l_addr + entry.r_offset), replacement);
    return nullptr;
}

} // namespace Velnor::Proc::Check
