#pragma once

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
#define VELNOR_INLINE [[gnu::always_inline]] inline
