#pragma once

#include "Proc/Effects/Kit/SubEffects.h"

namespace Velnor::Proc {

/// A mask as the blender takes it with a picture: in two resolutions, that of the luma and that of the chroma planes of
/// the picture's format. What is being made is committed last: a failure leaves nothing that would be trusted.
struct MaskLayer {
    DataHandle mask;   ///< GRAY8, of the picture's size.
    DataHandle chroma; ///< GRAY8, of the size of the chroma planes.

    bool IsOf(FrameFormat const& frame) const { return mask && mask->GetFrameFormat() == frame; }

    /// Draws the mask for a picture's frame.
    void Draw(IOneInputEffectVideo& shapeMask, Settings const& shape, DataHandle const& picture) {
        *this = {};
        DataHandle made = AsVideo(picture).MakeCopy(CopyMode::Share);
        RunWith(shapeMask, shape, made);
        mask = made;
    }

    /// Brings the mask to the resolution of the chroma.
    /// @param extractor  for extra alpha, configured for the picture's format
    void MakeChroma(IOneInputEffectVideo& extractor) {
        chroma = nullptr;
        DataHandle made = AsVideo(mask).MakeCopy(CopyMode::Share);
        extractor.ProcessData(made);
        chroma = made;
    }

    /// Makes the mask the picture's extra alpha.
    void AttachTo(IDataVideo& picture) const {
        picture.SetPlane(0, AsVideo(mask).GetPlane(0));
        picture.SetPlane(1, AsVideo(chroma).GetPlane(0));
    }
};

} // namespace Velnor::Proc
