#pragma once

#include "Proc/Interfaces/ProcException.h"

namespace Velnor::Proc {

/// Thrown by effects for bad input or settings that have no meaning.
class VELNOR_API EffectException : public ProcException {};

/// Thrown by filter effects for the same.
class VELNOR_API FilterException : public ProcException {};

} // namespace Velnor::Proc
