#pragma once

#include <array>
#include <cstddef>
#include <span>

namespace Velnor::Proc {

/// A face found in a picture, in pixels of the picture.
struct Face {
    struct Point {
        float x = 0, y = 0;
        friend bool operator==(Point const&, Point const&) = default;
    };
    static constexpr std::size_t LANDMARKS_COUNT = 68;

    int left = 0, top = 0, width = 0, height = 0; ///< Its box, which may reach out of the picture.
    /// The 68 points of the iBUG 300-W annotation, part by part (below), each part from the picture's left; eyes and
    /// lips go around, over the top first.
    std::array<Point, LANDMARKS_COUNT> landmarks{};

    /// A run of landmarks that stand for one part of the face. Left and right are the picture's.
    struct Part {
        std::size_t first, count;
    };
    static constexpr Part JAW{0, 17}, LEFT_BROW{17, 5}, RIGHT_BROW{22, 5}, NOSE{27, 9}, LEFT_EYE{36, 6},
        RIGHT_EYE{42, 6}, OUTER_LIPS{48, 12}, INNER_LIPS{60, 8};

    std::span<Point const> Get(Part const& part) const {
        return std::span<Point const>(landmarks).subspan(part.first, part.count);
    }

    friend bool operator==(Face const&, Face const&) = default;
};

} // namespace Velnor::Proc
