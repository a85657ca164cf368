#pragma once

#include "Proc/Interfaces/IEffectContext.h"

#include <vector>

namespace Velnor::Proc {

/// The picture that an effect may write to: the one behind the handle when nobody else holds it, else a copy that takes
/// its place in the handle. So the picture of a caller who kept a second handle stays as it is. Throws ProcException
/// when the handle holds no picture.
IDataVideo& OwnPicture(DataHandle& data);

/// Every format but those that interleave luma with subsampled chroma, which have planar twins of the same bytes.
/// `withPalette` says whether palette pictures are among them.
std::vector<PixFmt> const& SeparateFormats(bool withPalette);

/// Whether luma and subsampled chroma are interleaved in one plane.
bool IsPackedLuma(PixFmtDescription const& format);

/// A mask at the resolution of a format's chroma planes, as a grey picture: the mean over each chroma sample's area.
VideoHandle MakeChromaMask(IEffectContext& context, ConstPlane const& mask, PixFmtDescription const& format);

} // namespace Velnor::Proc
