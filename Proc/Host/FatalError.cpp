#include "Proc/Host/FatalError.h"

#include <atomic>

namespace Velnor::Proc {
namespace {

std::atomic<FatalErrorHandler> current{nullptr};

} // namespace

void SetFatalErrorHandler(FatalErrorHandler handler) { current = handler; }

FatalErrorHandler GetFatalErrorHandler() { return current; }

} // namespace Velnor::Proc
