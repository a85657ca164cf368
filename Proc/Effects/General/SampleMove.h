#pragma once

#include "Proc/Interfaces/IData.h"

namespace Velnor::Proc {

/// Whether a change between two formats is a matter of moving bytes, every sample keeping its number: another order of
/// red, green and blue, chroma of the same resolution kept elsewhere, grey into anything, luma into grey, the colours
/// of a palette looked up.
bool IsSampleMove(PixFmtDescription const& source, PixFmtDescription const& target);

/// Moves the colour (not the alpha) of a picture into another of the same size, where IsSampleMove holds. A byte of the
/// target without a meaning, such as the fourth of rgb0, becomes 255.
void MoveColour(IDataVideo const& source, IDataVideo& target);

/// Moves the alpha of a picture into another of the same size: opaque where the source has none, nothing to do where
/// the target has none. The target is no palette picture.
void MoveAlpha(IDataVideo const& source, IDataVideo& target);

} // namespace Velnor::Proc
