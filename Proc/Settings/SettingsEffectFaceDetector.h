#pragma once

#include "Proc/Interfaces/SettingsFields.h"

#include <span>
#include <vector>

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

/// LEFT,TOP,WIDTH,HEIGHT, faces separated by semicolons. For reading by people: the landmarks are left out.
template <>
struct TextForm<std::vector<Face>> {
    static constexpr std::string_view TYPE = "faces";
    static std::vector<Face> Parse(std::string_view) {
        Details::ThrowText("is what the effect finds; it cannot be set");
    }
    static std::string Print(std::vector<Face> const& faces) {
        std::string text;
        for (Face const& face : faces)
            text += (text.empty() ? "" : ";") + std::to_string(face.left) + "," + std::to_string(face.top) + "," +
                    std::to_string(face.width) + "," + std::to_string(face.height);
        return text;
    }
};

/// Settings of the face detector, and what it found. The picture is not changed. Large pictures are searched at about
/// 1.2 megapixels, so in those the smallest face that is found is larger: about 7 % of the side of a square picture.
class VELNOR_API SettingsEffectFaceDetector final : public SettingsOf<SettingsEffectFaceDetector> {
    VELNOR_SETTINGS(SettingsEffectFaceDetector, "Finds faces and 68 landmarks on each.")
    VELNOR_FIELD(int, SmallestFace, 40, "side of the smallest face that is looked for", Unit("pixels"), Range(20, 2000))
    VELNOR_FIELD(std::string, Model, "",
                 "file of the model of 68 landmarks, as dlib saves it; empty is that of Debian's package libdlib-data")
    VELNOR_FIELD(std::vector<Face>, Faces, {}, "the faces found, the largest first", Output())
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
