#pragma once

#include "Core/PixFmt.h"
#include "Proc/Interfaces/Color.h"
#include "Proc/Interfaces/Plane.h"

namespace Velnor::Proc {

/// Paints one plane of a picture in one colour; bytes beyond the rows stay. Luma and chroma are full range BT.601, grey
/// takes the luma, bytes without a meaning become 255. A palette plane gets the colour in every entry, and its indices
/// become 0.
void FillPlane(MutablePlane const& plane, PixFmtDescription const& description, unsigned char index,
               Color const& color);

} // namespace Velnor::Proc
