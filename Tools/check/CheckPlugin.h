#pragma once

#include "Proc/Host/Host.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace Velnor::Proc::Check {

struct CheckOptions {
    std::filesystem::path plugin;
    int level = 2;                      ///< 1 to 3.
    std::string effect;                 ///< The name of one to check; empty for all.
    std::vector<std::string> skipped;   ///< Names of promises that are not checked.
    std::chrono::seconds timeLimit{60}; ///< Of one step, which is one run of an effect or a few.
};

/// A broken promise. What breaks in many places alike is one finding, with the first of them.
struct Finding {
    std::string promise;
    std::string where; ///< Format, size and parameter.
    std::string what;
    int cases = 1;
};

/// A promise that an effect need not keep.
struct Waived {
    std::string promise;
    std::string reason;
};

struct EffectReport {
    RegisteredEffect effect;
    std::string name; ///< As people type it.
    std::vector<Finding> broken;
    std::vector<Waived> waived;
};

struct PluginReport {
    std::string failure;               ///< Why the plug-in cannot be loaded; empty when it can.
    std::vector<std::string> names;    ///< Of all its effects, each once.
    std::vector<EffectReport> effects; ///< Of those that were checked.
};

/// Checks the promises of a plug-in's effects, each effect in a process of its own: what ends that, or hangs in it, is
/// a finding. `onEffect` is called as soon as an effect is done. Throws std::system_error when there is no process to
/// be had.
PluginReport CheckPlugin(CheckOptions const& options, std::function<void(EffectReport const&)> const& onEffect);

/// A host whose pictures lie between guarded rows and begin with another pattern each time, as the checks need it. An
/// overrun is told to `onOverrun`.
MemoryLimits GuardedMemory(void (*onOverrun)(std::string const& what));

} // namespace Velnor::Proc::Check
