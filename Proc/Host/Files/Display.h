#pragma once

#include "Proc/Host/Files/VipsSupport.h"

#include <string>
#include <vector>

namespace Velnor::Proc::Files {

/// The image as grey or RGB, each with or without alpha (1 to 4 bands), of 8 or unsigned 16 bits. CMYK goes through the
/// embedded profile, or a common one where there is none, to sRGB; Lab and other models go to sRGB; floating point is
/// linear light from 0 to 1, so it gets the sRGB curve. A profile that no longer describes the values is taken out.
/// Null when the library fails.
OwnedImage MakeDisplayable(OwnedImage image);

/// Whether MakeDisplayable takes the image from another colour model to sRGB.
bool ChangesColorModel(VipsImage* image);

/// The image with the profile of sRGB in place of its own; a grey one has none. Null when the library fails.
OwnedImage WithSrgbProfile(OwnedImage const& image);

/// What MakeDisplayable will take from an image, and that further pictures of its file are not read: a line for a
/// person each.
std::vector<std::string> DescribeConversions(VipsImage* image, int descriptor);

} // namespace Velnor::Proc::Files
