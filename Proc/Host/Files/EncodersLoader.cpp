#include "Proc/Host/Files/EncodersModule.h"
#include "Proc/Host/ModuleLoader.h"
#include "Proc/Host/PictureFile.h"
#include "Proc/Host/PluginLoader.h"

#include <dlfcn.h>

namespace Velnor::Proc::Files {
namespace {

EncodersModule const& LoadEncoders() {
    void* const library = OpenModule(GetInstalledFolder() / ENCODERS_MODULE_FILE);
    auto const entry = library == nullptr ? nullptr : dlsym(library, ENCODERS_MODULE_ENTRY);
    if (entry == nullptr) {
        char const* const error = dlerror();
        VELNOR_THROW(FileException, std::string("the module of its encoder cannot be loaded: ") +
                                        (error == nullptr ? "it has no entry" : error));
    }
    return *reinterpret_cast<EncodersModuleFunction>(entry)();
}

} // namespace

EncodersModule const& GetEncoders() {
    static EncodersModule const& module = LoadEncoders(); // Tried anew by the next caller when it throws.
    return module;
}

} // namespace Velnor::Proc::Files
