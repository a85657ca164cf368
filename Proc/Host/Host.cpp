#include "Proc/Host/Host.h"

#include "Proc/Host/Context.h"
#include "Proc/Host/Factory.h"
#include "Proc/Host/PluginLoader.h"
#include "Proc/Host/Registry.h"

namespace Velnor::Proc {

struct Host::State {
    explicit State(MemoryLimits const& pictures) : context(MakeShared<Context>(pictures)) {}

    std::shared_ptr<Registry> registry = std::make_shared<Registry>("host");
    ContextHandle context;
    FactoryHandle factory = MakeShared<Factory>(registry, context);
};

Host::Host(std::function<void(IEffectRegistry&)> const& registerEffects, MemoryLimits const& pictures)
    : state(std::make_unique<State>(pictures)) {
    registerEffects(*state->registry);
}

Host::~Host() = default;

void Host::LoadPlugin(std::filesystem::path const& file) { LoadPluginFile(file, *state->registry); }

void Host::LoadInstalledPlugins() {
    for (std::filesystem::path const& file : FindInstalledPlugins()) LoadPlugin(file);
}

FactoryHandle const& Host::GetFactory() const { return state->factory; }
ContextHandle const& Host::GetContext() const { return state->context; }
IEffectRegistry& Host::GetRegistry() { return *state->registry; }

std::vector<RegisteredEffect> Host::GetEffects() const {
    std::vector<RegisteredEffect> effects;
    for (Registration const& registration : state->registry->GetAll()) effects.push_back(registration.effect);
    return effects;
}

} // namespace Velnor::Proc
