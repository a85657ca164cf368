#include "Proc/Interfaces/ProcException.h"

namespace Velnor::Proc {

ProcException::~ProcException() = default;

} // namespace Velnor::Proc
