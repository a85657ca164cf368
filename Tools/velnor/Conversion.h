#pragma once

#include "Proc/Interfaces/IEffectFactory.h"

#include <vector>

namespace Velnor::Tool {

/// Brings the picture into that of the formats which loses least, its extra alpha and its attributes kept.
void Convert(Proc::DataHandle& picture, std::vector<PixFmt> const& formats, Proc::IEffectFactory& factory);

} // namespace Velnor::Tool
