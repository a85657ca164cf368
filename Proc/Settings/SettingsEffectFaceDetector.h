#pragma once

#include "Proc/Interfaces/SettingsFields.h"

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
    /// The 68 points of the iBUG 300-W annotation: 0..16 jaw from the picture's left, 17..21 and 22..26 brows, 27..35
    /// nose, 36..41 and 42..47 eyes, 48..59 outer and 60..67 inner lips.
    std::array<Point, LANDMARKS_COUNT> landmarks{};

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

/// Settings of the face detector, and what it found. The picture is not changed.
class VELNOR_API SettingsEffectFaceDetector final : public SettingsOf<SettingsEffectFaceDetector> {
    VELNOR_SETTINGS(SettingsEffectFaceDetector, "Finds faces and 68 landmarks on each.")
    VELNOR_FIELD(int, SmallestFace, 40, "side of the smallest face that is looked for", Unit("pixels"), Range(20, 2000))
    VELNOR_FIELD(std::vector<Face>, Faces, {}, "the faces found, the largest first", Output())
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
