#pragma once

#include "Core/Export.h"

namespace Velnor::Proc {

/// What is done when a library that the host stands on is about to end the process: it has said why and cannot be
/// stopped, mostly because an allocation failed where it has no way to report it. May be called on any thread, with no
/// memory left; does not return when it wants to end the process in its own way.
using FatalErrorHandler = void (*)(char const* reason);

/// Before the host loads its modules. Without a handler each library goes its own way, with a signal.
VELNOR_API void SetFatalErrorHandler(FatalErrorHandler handler);

/// Null when there is none.
VELNOR_API FatalErrorHandler GetFatalErrorHandler();

} // namespace Velnor::Proc
