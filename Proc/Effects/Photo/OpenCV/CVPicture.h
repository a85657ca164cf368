#pragma once

#include "Proc/Effects/Photo/Guarded.h"

#include <opencv2/core.hpp>

#include <vector>

namespace Velnor::Proc {

/// A plane as OpenCV sees it: 8 bits, one channel for each byte of a sample group. The view is valid as long as the
/// plane's. Throws EffectException for a plane stored bottom-up, or one that is too large for OpenCV's sizes.
cv::Mat ViewOf(MutablePlane const& plane, PlaneLayout const& layout);

/// The same to read from. OpenCV has no view to read only: it goes in as the source of an operation alone.
cv::Mat const ViewOf(ConstPlane const& plane, PlaneLayout const& layout);

/// A plane that OpenCV can read: a view, or a copy of a plane stored bottom-up.
cv::Mat const ReadPlane(IDataVideo const& picture, unsigned char index);

/// Formats whose planes hold samples of one kind and resolution in each channel: all but palettes and those that
/// interleave luma with subsampled chroma.
std::vector<PixFmt> const& PlaneFormats();

/// Of these, the ones without subsampled chroma: every plane has the picture's size.
std::vector<PixFmt> const& FullFormats();

/// Grey, and luma/chroma with planes of their own.
std::vector<PixFmt> const& LumaPlaneFormats();

/// Base of what all effects on OpenCV have in common; see MakeGuardedEffect.
struct OnOpenCV {
    static constexpr char const* LIBRARY = "OpenCV";
};

template <class Effect>
intrusive_ptr<IEffect> MakeCVEffect(FactoryHandle const& factory, ContextHandle const& context) {
    return MakeGuardedEffect<Effect, cv::Exception>(factory, context);
}

} // namespace Velnor::Proc
