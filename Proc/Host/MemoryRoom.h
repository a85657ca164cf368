#pragma once

#include "Core/Export.h"

#include <cstdint>
#include <string_view>

namespace Velnor::Proc {

/// Bytes of memory that this process may come to use: what the machine has, or less where a control group or a resource
/// limit says so.
VELNOR_API std::uint64_t GetMemorySize();

/// Whether the process could get that many more bytes now. Only what limits the process's own memory is seen: pages
/// that the system promised and does not have show when they are touched.
VELNOR_API bool HasRoom(std::uint64_t bytes);

/// Throws std::bad_alloc when there is no such room. To be asked before a library that does not survive an allocation
/// that fails is let loose.
VELNOR_API void RequireRoom(std::uint64_t bytes);

/// Whether a library's complaint is about memory, or about a thread, whose stack could not be had. The complaint may
/// say so itself; what a library says of a failed allocation otherwise is told by there being no room for `bytes`.
VELNOR_API bool IsAboutMemory(std::string_view complaint, std::uint64_t bytes);

} // namespace Velnor::Proc
