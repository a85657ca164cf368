#pragma once

#include "Core/Export.h"
#include "Proc/Interfaces/ProcException.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <string>
#include <string_view>

namespace Velnor::Proc::Kernels {

/// The instruction sets that kernels have code for, each with all before it. Whatever a kernel has no code for it does
/// by the code for the one before; Scalar is its meaning.
enum class Target { Scalar, Sse2, Ssse3, Sse4, Avx2, Avx512, Avx512Vbmi };

constexpr std::array<std::string_view, 7> TARGET_NAMES{"scalar", "sse2",   "ssse3",     "sse4",
                                                       "avx2",   "avx512", "avx512vbmi"};

constexpr std::string_view GetTargetName(Target target) { return TARGET_NAMES[static_cast<std::size_t>(target)]; }

/// The best that the processor at hand can run.
inline Target FindProcessorTarget() {
    Target best = Target::Scalar;
#if defined(__x86_64__)
    __builtin_cpu_init();
    std::array<bool, 7> const has{true,
                                  true, // of every such processor
                                  __builtin_cpu_supports("ssse3") != 0,
                                  __builtin_cpu_supports("sse4.1") != 0,
                                  __builtin_cpu_supports("avx2") != 0,
                                  __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                                      __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq"),
                                  __builtin_cpu_supports("avx512vbmi") != 0};
    for (std::size_t i = 0; i < has.size() && has[i]; ++i) best = static_cast<Target>(i);
#endif
    return best;
}

/// What the environment variable VELNOR_TARGET allows: the name of a target, all when it is not set. Throws
/// ProcException naming the variable, its value and the names that there are.
inline Target ReadTargetLimit() {
    char const* const given = std::getenv("VELNOR_TARGET");
    if (given == nullptr) return Target::Avx512Vbmi;
    auto const found = std::ranges::find(TARGET_NAMES, std::string_view(given));
    if (found != TARGET_NAMES.end()) return static_cast<Target>(found - TARGET_NAMES.begin());
    std::string names;
    for (std::string_view const name : TARGET_NAMES) names += (names.empty() ? "" : ", ") + std::string(name);
    VELNOR_THROW(ProcException,
                 "The environment variable VELNOR_TARGET is \"" + std::string(given) + "\"; it takes " + names + ".");
}

/// The best target that kernels use: what both the processor and the environment allow, until a test says less. One
/// for each library that holds kernels of its own.
VELNOR_API inline std::atomic<Target>& UsedTarget() {
    static std::atomic<Target> used = std::min(FindProcessorTarget(), ReadTargetLimit());
    return used;
}

/// Whether kernels may use code for a target.
inline bool HasTarget(Target target) { return target <= UsedTarget().load(std::memory_order_relaxed); }

} // namespace Velnor::Proc::Kernels
