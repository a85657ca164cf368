#pragma once

#include "Proc/Interfaces/IData.h"

namespace Velnor::Proc {

/// A picture's own alpha, as a plane of one byte of each of its samples. Empty where the format has none or nothing is
/// clear: colours count alike then.
ConstPlane FindClearAlpha(IDataVideo const& picture);

/// Gives the pixels of alpha 0 the colours that are seen around them, for passes that look at more than one pixel: what
/// is clear has no colour of its own to give. What is seen keeps every byte, and so does a picture without alpha,
/// without clear pixels, or clear all over. Chroma of less resolution counts as clear where all of its area is. Palette
/// pictures stay as they are.
void CoverClearPixels(IDataVideo& picture);

/// A copy of a picture with its clear pixels covered, which shares the samples where there are none.
VideoHandle CopyCovered(IDataVideo const& picture);

} // namespace Velnor::Proc
