#pragma once

#include "Proc/Interfaces/IData.h"
#include "Proc/Settings/SettingsResizer.h"

#include <vector>

namespace Velnor::Proc {

/// What a resize comes to: the part of the picture that is scaled, to which size, and where it lies in the result.
struct ResizePlan {
    Rectangle part;
    std::uint32_t scaledWidth = 0;
    std::uint32_t scaledHeight = 0;
    FrameFormat result; ///< Larger than the scaled part where bars stand around it.
    std::uint32_t left = 0;
    std::uint32_t top = 0;

    bool NeedsScaling() const { return part.width != scaledWidth || part.height != scaledHeight; }
    bool HasBars() const { return result.width != scaledWidth || result.height != scaledHeight; }
    bool IsCut(FrameFormat const& frame) const { return part != Rectangle{0, 0, frame.width, frame.height}; }
};

/// The plan for a picture of a frame and format. Sides are rounded to the nearest pixel; cuts and bars are central, on
/// whole chroma samples. The result has the target's pixel aspect with the mode to-frame, else the picture's. Throws
/// ProcException for a mode, method, fit, factor or target that has no meaning, for a side that comes out as 0 without
/// the flag for at least one pixel, and for one beyond LARGEST_PICTURE_SIDE.
ResizePlan PlanResize(FrameFormat const& frame, PixFmtDescription const& format, SettingsResizer const& settings);

struct Size {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    friend bool operator==(Size const&, Size const&) = default;
};

/// The sizes that a resize goes through, the last one the wanted one. A shrink beyond the method's largest first comes
/// down to a multiple of the target, by area.
VELNOR_API std::vector<Size> PlanSteps(Size from, Size to, SettingsResizer::ResizeMethods method);

} // namespace Velnor::Proc
