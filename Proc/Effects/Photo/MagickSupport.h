#pragma once

#include "Proc/Interfaces/IData.h"

#include <Magick++.h>

#include <functional>
#include <string>
#include <vector>

/// Pictures into and out of ImageMagick, with its refusals as exceptions of ours.
namespace Velnor::Proc::MagickSupport {

/// Packed red, green and blue, with and without alpha: the formats that Import and Export take.
std::vector<PixFmt> const& GetColourFormats();

/// Throws EffectException, tagged OverLimit and naming the limit and its value, when the library's policy does not
/// allow `copies` pictures of this size now. To be asked before every import: the library ends the process by an
/// assertion at some of its limits.
void RequireRoom(FrameFormat const& frame, int copies, std::string const& who);

/// Runs work that uses the library, which is set up first. What the library throws becomes an EffectException that
/// begins with `who` and holds the library's text.
void Run(std::string const& who, std::function<void()> const& work);

::Magick::Image Import(IDataVideo const& picture);

/// Writes red, green and blue; alpha stays. The sizes are the same.
void Export(::Magick::Image const& image, IDataVideo& picture);

} // namespace Velnor::Proc::MagickSupport
