#pragma once

#include "Core/PixFmt.h"

#include <compare>
#include <span>

namespace Velnor::Proc {

/// What a picture loses by a change of format, the gravest loss first: losses compare in this order.
struct FormatLoss {
    bool alpha = false; ///< The source has alpha, the target has none.
    /// Chroma resolution: halvings of it, across and down together. Colours squeezed into a palette count as more than
    /// any halving, colours dropped for grey as more than that. A grey source has none to lose.
    int chroma = 0;
    /// Chroma samples that the source does not have: doublings of its resolution, across and down together. What is
    /// computed from the chroma, such as a few colours for all, would not survive the way back.
    int madeUp = 0;
    /// Colour: red, green and blue to luma and chroma or back, which rounds. Another order of the bytes loses nothing,
    /// nor does grey in any format.
    bool matrix = false;

    friend auto operator<=>(FormatLoss const&, FormatLoss const&) = default;
};

/// The loss of a change between two formats of the table.
VELNOR_API FormatLoss GetFormatLoss(PixFmtDescription const& source, PixFmtDescription const& target);

/// The source's own format where the list holds it; else the format of the list that loses least of a picture in
/// `source`, the first among equals. A list whose first red, green and blue format is blue-first asks for that order,
/// as an effect does that pairs a colour's components with bytes by position: there a red-first source goes by loss and
/// order alone. Formats outside the table are passed over; PixFmt::NONE when nothing is left.
VELNOR_API PixFmt ChooseFormat(PixFmt source, std::span<PixFmt const> accepted);

} // namespace Velnor::Proc
