#pragma once

#include "Proc/Interfaces/IEffectFactory.h"

namespace Velnor::Tool {

/// A picture as the mask (GRAY8) that it is meant as: its luma, over black where it is clear.
Proc::DataHandle MakeMask(Proc::DataHandle picture, Proc::IEffectFactory& factory);

/// Gives the picture that opacity, in a format that has a place for it. The plane is of the picture's size.
void WriteAlpha(Proc::DataHandle& picture, Proc::ConstPlane const& alpha, Proc::IEffectFactory& factory);

/// Turns the extra alpha (index 0) of a picture whose format has no alpha into alpha of its own.
void TakeExtraAlpha(Proc::DataHandle& picture, Proc::IEffectFactory& factory);

} // namespace Velnor::Tool
