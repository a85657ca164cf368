#pragma once

#include "Core/Export.h"

namespace Velnor::Core {

/// How many processors this process may use, 1 or more.
VELNOR_API unsigned CountProcessors();

/// How many threads the work on one picture may use, 1 or more: the processors that there are, or what was set.
VELNOR_API unsigned GetThreadsPerPicture();

/// For a program that works on several pictures at once, so that together they use the processors once. To be called
/// before the first file is read and the first effect made: libraries are told when they are loaded. 0 means 1.
VELNOR_API void SetThreadsPerPicture(unsigned threads);

} // namespace Velnor::Core
