#pragma once

#include "Proc/Interfaces/ProcException.h"

namespace Velnor::Proc {

/// Thrown by effects for bad input or settings that have no meaning.
class VELNOR_API EffectException : public ProcException {};

/// Thrown by filter effects for the same.
class VELNOR_API FilterException : public ProcException {};

} // namespace Velnor::Proc

// Compiled once, with the contract, so that the host and other libraries throw them too.
extern template void Velnor::Details::ThrowDescribed(Velnor::Proc::EffectException, std::string const&,
                                                     boost::source_location const&);
extern template void Velnor::Details::ThrowDescribed(Velnor::Proc::FilterException, std::string const&,
                                                     boost::source_location const&);
