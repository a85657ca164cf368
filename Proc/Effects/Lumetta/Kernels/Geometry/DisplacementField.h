#pragma once

#include "Proc/Interfaces/PushStroke.h"

#include <cstdint>
#include <vector>

namespace Velnor::Proc::Kernels {

/// Columns x0 to x1 - 1 and rows y0 to y1 - 1; all 0 where nothing was touched.
struct Box {
    int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    bool IsEmpty() const { return x0 == 0 && y0 == 0 && x1 == 0 && y1 == 0; }
    friend bool operator==(Box const&, Box const&) = default;
};

/// A pair of 32-bit numbers for each pixel: how far the content there has been pushed, to the right and down.
class DisplacementField {
public:
    struct Pair {
        float x = 0, y = 0;
        friend bool operator==(Pair const&, Pair const&) = default;
    };

    DisplacementField() = default;
    DisplacementField(std::uint32_t fieldWidth, std::uint32_t fieldHeight)
        : width(static_cast<int>(fieldWidth)),
          height(static_cast<int>(fieldHeight)),
          pairs(std::size_t{fieldWidth} * fieldHeight) {}

    bool HasSize(std::uint32_t otherWidth, std::uint32_t otherHeight) const {
        return static_cast<std::uint32_t>(width) == otherWidth && static_cast<std::uint32_t>(height) == otherHeight;
    }

    /// Adds the push of a round brush along a stroke: `strength` % of a fifth of the brush's diameter within a quarter
    /// of its radius around the stroke, falling to nothing at the brush's rim; two pushes the same way add up to the
    /// larger of the two. Returns the box that the stroke may have touched.
    /// @param size      diameter in pixels, 0 or more
    /// @param strength  percent, finite, 0 or more
    Box AddStroke(PushStroke const& stroke, int size, double strength);

    /// The box that AddStroke may touch.
    Box FindBox(PushStroke const& stroke, int size) const;

    /// The pairs of a box, row after row; Write puts them back.
    std::vector<Pair> Read(Box const& box) const;
    void Write(Box const& box, std::vector<Pair> const& values);

    Pair const& At(int x, int y) const { return pairs[Place(x, y)]; }

private:
    std::size_t Place(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    }

    int width = 0;
    int height = 0;
    std::vector<Pair> pairs; ///< Row after row.
};

} // namespace Velnor::Proc::Kernels
