#pragma once

#include "Core/Export.h"
#include "Proc/Interfaces/ProcException.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

// Code for several instruction sets in one library: a kernel lists its Variants, slowest first, and calls what Choose()
// gives. All variants give the same bytes.
//
//     void Fill(...) { plain loops }
//     VELNOR_TARGET("avx2") void FillAvx2(...) { the same again, or intrinsics }
//     constexpr Variants FILL{Variant{Target::Scalar, &Fill}, Variant{Target::Avx2, &FillAvx2}};
//     FILL.Choose()(...);

#if defined(__x86_64__)
/// Whether there are instruction sets to tell apart: the one switch around intrinsics. Code without any needs none, as
/// the attribute below is nothing elsewhere.
#define VELNOR_X86 1
/// Compiles a function for an instruction set.
#define VELNOR_TARGET(set) __attribute__((target(set)))
#else
#define VELNOR_TARGET(set)
#endif

/// Of functions that several variants share: each has to be compiled within the one that calls it.
#define VELNOR_INLINE inline __attribute__((always_inline))

// A region of functions for one instruction set. Every include stands above the first: a function of the standard
// library that was compiled inside such a region could be the copy that the linker keeps for the whole program.
#define VELNOR_PRAGMA(text) _Pragma(#text)
#if defined(__clang__)
#define VELNOR_TARGET_BEGIN(set) VELNOR_PRAGMA(clang attribute push(__attribute__((target(set))), apply_to = function))
#define VELNOR_TARGET_END VELNOR_PRAGMA(clang attribute pop)
#define VELNOR_UNROLL VELNOR_PRAGMA(unroll)
#else
#define VELNOR_TARGET_BEGIN(set) VELNOR_PRAGMA(GCC push_options) VELNOR_PRAGMA(GCC target(set))
#define VELNOR_TARGET_END VELNOR_PRAGMA(GCC pop_options)
#define VELNOR_UNROLL VELNOR_PRAGMA(GCC unroll 16)
#endif

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
#ifdef VELNOR_X86
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

/// Throws ProcException, naming the target, when kernels may not use it.
inline void RequireTarget(Target target) {
    if (!HasTarget(target)) VELNOR_THROW(ProcException, "kernels may not use " + std::string(GetTargetName(target)));
}

/// One of the ways to do what a kernel does: a function, or whatever tells how.
template <class Code>
struct Variant {
    Target target;
    Code code;
};
template <class Code>
Variant(Target, Code) -> Variant<Code>; // clang 14 finds none by itself.

/// All of them, slowest first, of which the first runs everywhere.
template <class Code, std::size_t N>
class Variants {
public:
    template <class... More>
    constexpr explicit Variants(Variant<Code> const& first, More const&... more) : all{first, more...} {}

    /// The last of those for a target up to `limit`, and by that up to what kernels may use.
    Code const& Choose(Target limit = UsedTarget().load(std::memory_order_relaxed)) const {
        std::size_t best = N - 1;
        while (best > 0 && all[best].target > limit) --best;
        return all[best].code;
    }

    /// The targets that there is code for and that kernels may use.
    std::vector<Target> ListTargets() const {
        std::vector<Target> targets;
        for (Variant<Code> const& each : all)
            if (HasTarget(each.target)) targets.push_back(each.target);
        return targets;
    }

private:
    std::array<Variant<Code>, N> all;
};
template <class Code, class... More>
Variants(Variant<Code> const&, More const&...) -> Variants<Code, 1 + sizeof...(More)>;

} // namespace Velnor::Proc::Kernels
