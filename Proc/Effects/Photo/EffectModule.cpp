#include "Proc/Effects/Photo/EffectModule.h"

#include "Proc/Host/PluginLoader.h"
#include "Proc/Interfaces/ProcException.h"

#include <dlfcn.h>

namespace Velnor::Proc {

EffectFactoryFunction FindModuleEffect(ModuleEffect const& effect) {
    auto const refuse = [&](std::string const& reason) {
        VELNOR_THROW(ProcException, "The effect " + *effect.classId + " needs the module " + effect.module +
                                        ", which cannot be used: " + reason + ".");
    };
    // Lazily: most functions of a library are never called. Modules stay loaded: their effects may be in use to the end.
    void* const library = dlopen((GetInstalledFolder() / effect.module).c_str(), RTLD_LAZY | RTLD_LOCAL);
    if (library == nullptr) {
        char const* const error = dlerror();
        refuse(error == nullptr ? "the loader gives no reason" : error);
    }
    auto const find = reinterpret_cast<EffectModuleFunction>(dlsym(library, EFFECT_MODULE_ENTRY));
    if (find == nullptr) refuse(std::string("it has no entry ") + EFFECT_MODULE_ENTRY);
    EffectFactoryFunction const create = find(effect.name);
    if (create == nullptr) refuse(std::string("it has no effect named ") + effect.name);
    return create;
}

} // namespace Velnor::Proc
