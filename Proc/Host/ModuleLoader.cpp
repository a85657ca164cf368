#include "Proc/Host/ModuleLoader.h"

#include "Proc/Host/MemoryRoom.h"

#include <dlfcn.h>

#include <fstream>
#include <string>

namespace Velnor::Proc {
namespace {

/// What a library takes to load and to set itself up. Some that cannot have it end the process.
constexpr std::uint64_t SETUP_ROOM = 64 << 20;

/// Opens what the module needs one by one, in the order of the list that stands beside it: libraries that need no other
/// come first. The loader looks for a symbol in all libraries that are opened at once, in turn. One by one these are a
/// few, and the hundred that libvips stands on are ready in 30 ms instead of 50. They stay open, as the module does.
void OpenNeeded(std::filesystem::path const& module) {
    std::ifstream list(module.string() + ".needed");
    // The list is of the machine that built the module: what is missing here, the loader finds by itself.
    for (std::string name; std::getline(list, name);) {
        RequireRoom(SETUP_ROOM);
        (void)dlopen(name.c_str(), RTLD_LAZY | RTLD_LOCAL);
    }
}

} // namespace

void* OpenModule(std::filesystem::path const& file) {
    OpenNeeded(file);
    RequireRoom(SETUP_ROOM);
    void* const library = dlopen(file.c_str(), RTLD_LAZY | RTLD_LOCAL);
    // The largest that modules stand on. The loader says of a lack of memory no more than what it could not map.
    constexpr std::uint64_t LARGEST_LIBRARY = 256 << 20;
    if (library == nullptr) RequireRoom(LARGEST_LIBRARY);
    return library;
}

} // namespace Velnor::Proc
