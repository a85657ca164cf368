#pragma once

#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Interfaces/IData.h"

#include <string>

namespace Velnor::Proc {

/// Throws EffectException unless a second picture has the size of the first.
/// @param what  what the second is and does: "The mask is"
inline void RequireOneSize(std::string const& what, FrameFormat const& second, FrameFormat const& first) {
    if (!IsSameSize(second, first))
        VELNOR_THROW(EffectException, what + " " + SizeText(second) + " pixels, the picture " + SizeText(first) +
                                          ": they must be of one size.");
}

/// Throws EffectException unless the picture's first plane is one byte a pixel.
/// @param what  what the picture is and does: "The strokes are"
inline void RequireOneByteAPixel(std::string const& what, IDataVideo const& picture) {
    PixFmtDescription const& format = picture.GetDescription();
    if (format.planes[0].bytes != 1 || format.planes[0].shiftX != 0)
        VELNOR_THROW(EffectException, what + " in the format " + std::string(format.name) +
                                          ", one byte a pixel is needed, as in gray8.");
}

} // namespace Velnor::Proc
