#pragma once

#include "Proc/Interfaces/IEffectContext.h"

#include <vector>

namespace Velnor::Proc {

/// The formats in which pictures are handled whose planes do not hold one kind of sample each (those that interleave
/// luma with subsampled chroma, and palettes), in an order in which each finds the one that loses nothing of it.
std::vector<PixFmt> const& StandInFormats();

/// Whether luma and subsampled chroma are interleaved in one plane.
bool IsPackedLuma(PixFmtDescription const& format);

/// A mask at the resolution of a format's chroma planes, as a grey picture: the mean over each chroma sample's area.
VideoHandle MakeChromaMask(IEffectContext& context, ConstPlane const& mask, PixFmtDescription const& format);

} // namespace Velnor::Proc
