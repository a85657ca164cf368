#pragma once

#include "Proc/Interfaces/EffectExceptions.h"

namespace Velnor::Proc {

/// Thrown where a neural network is to be run whose file is not there, so that an effect that can do without may tell
/// this from a network that fails.
class VELNOR_API NetworkMissingException : public EffectException {};

} // namespace Velnor::Proc

extern template void Velnor::Details::ThrowDescribed(Velnor::Proc::NetworkMissingException, std::string const&,
                                                     boost::source_location const&);
