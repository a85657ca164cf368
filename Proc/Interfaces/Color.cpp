#include "Proc/Interfaces/Color.h"

#include <algorithm>
#include <cmath>

namespace Velnor::Proc {
namespace {

// Rec. ITU-T T.871 (JFIF), section 7.
unsigned char Weighted(Color const& color, double red, double green, double blue, double offset) {
    double const value = red * color.GetRed() + green * color.GetGreen() + blue * color.GetBlue() + offset;
    return static_cast<unsigned char>(std::lround(std::clamp(value, 0.0, 255.0)));
}

} // namespace

unsigned char Color::y() const { return Weighted(*this, 0.299, 0.587, 0.114, 0.0); }
unsigned char Color::u() const { return Weighted(*this, -0.299 / 1.772, -0.587 / 1.772, 0.5, 128.0); }
unsigned char Color::v() const { return Weighted(*this, 0.5, -0.587 / 1.402, -0.114 / 1.402, 128.0); }

} // namespace Velnor::Proc
