#include "Proc/Interfaces/Color.h"

#include "Proc/Interfaces/LumaShare.h"

#include <algorithm>

namespace Velnor::Proc {
namespace {

/// (blue * color's blue + green * ... + red * ...) / divisor + offset to the nearest level, halves up. In whole
/// numbers, because halves do occur and a rounded sum may fall on either side of one.
unsigned char Weighted(Color const& color, int blue, int green, int red, int divisor, int offset) {
    int const sum = blue * color.GetBlue() + green * color.GetGreen() + red * color.GetRed();
    return static_cast<unsigned char>(std::min((sum + offset * divisor + divisor / 2) / divisor, 255));
}

using Share = LumaShare<int>;

} // namespace

// Rec. ITU-T T.871 (JFIF), section 7, in thousandths: u is 128 + (B - Y) / 1.772, v is 128 + (R - Y) / 1.402.
unsigned char Color::y() const { return Weighted(*this, Share::BLUE, Share::GREEN, Share::RED, 1000, 0); }
unsigned char Color::u() const { return Weighted(*this, 1000 - Share::BLUE, -Share::GREEN, -Share::RED, 1772, 128); }
unsigned char Color::v() const { return Weighted(*this, -Share::BLUE, -Share::GREEN, 1000 - Share::RED, 1402, 128); }

} // namespace Velnor::Proc
