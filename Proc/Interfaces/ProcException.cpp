#include "Proc/Interfaces/ProcException.h"

namespace Velnor::Proc {

ProcException::~ProcException() = default;

} // namespace Velnor::Proc

template void Velnor::Details::ThrowDescribed(Velnor::Proc::ProcException, std::string const&,
                                              boost::source_location const&);
