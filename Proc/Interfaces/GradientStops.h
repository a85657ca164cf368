#pragma once

#include "Proc/Interfaces/Color.h"

#include <cstdint>
#include <map>

namespace Velnor::Proc {

/// The stops of a colour gradient: a colour for some brightness levels, 0 (black) to 256 (past white).
using GradientStops = std::map<std::uint16_t, Color>;

} // namespace Velnor::Proc
