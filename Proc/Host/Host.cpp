#include "Proc/Host/Host.h"

#include "Proc/Host/Context.h"
#include "Proc/Host/Factory.h"
#include "Proc/Host/PluginLoader.h"
#include "Proc/Host/PluginPath.h"
#include "Proc/Host/Registry.h"
#include "Proc/Interfaces/ProcException.h"

#include <algorithm>
#include <system_error>

namespace Velnor::Proc {

struct Host::State {
    explicit State(MemoryLimits const& pictures) : context(MakeShared<Context>(pictures)) {}

    std::shared_ptr<Registry> registry = std::make_shared<Registry>("host");
    ContextHandle context;
    FactoryHandle factory = MakeShared<Factory>(registry, context);
    std::vector<std::filesystem::path> plugins; ///< Without symbolic links.
};

Host::Host(std::function<void(IEffectRegistry&)> const& registerEffects, MemoryLimits const& pictures)
    : state(std::make_unique<State>(pictures)) {
    registerEffects(*state->registry);
}

Host::~Host() = default;

void Host::LoadPlugin(std::filesystem::path const& file) {
    LoadPluginFile(file, *state->registry);
    state->plugins.push_back(std::filesystem::canonical(file));
}

bool Host::HasPlugin(std::filesystem::path const& file) const {
    std::error_code error;
    std::filesystem::path const real = std::filesystem::canonical(file, error);
    return !error && std::ranges::find(state->plugins, real) != state->plugins.end();
}

void Host::LoadInstalledPlugins() {
    for (std::filesystem::path const& file : FindInstalledPlugins()) LoadPlugin(file);
}

std::vector<std::string> Host::LoadUserPlugins() {
    PluginPath const path = FindUserPlugins();
    std::vector<std::string> problems = path.refusals;
    for (std::filesystem::path const& file : path.files) {
        if (HasPlugin(file)) continue;
        try {
            LoadPlugin(file);
        } catch (ProcException const& problem) {
            problems.push_back(DescribeException(problem));
        }
    }
    return problems;
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
