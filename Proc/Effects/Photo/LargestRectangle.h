#pragma once

#include "Proc/Interfaces/IData.h"

namespace Velnor::Proc {

/// The largest rectangle of a mask, one byte a pixel, in which no byte is 0; of width and height 0 when all are. For
/// each row it is the largest rectangle under the profile of the columns that end there; the cost is that of one look
/// at each pixel.
Rectangle FindLargestRectangle(ConstPlane const& mask);

} // namespace Velnor::Proc
