#pragma once

#include "Proc/Interfaces/Face.h"
#include "Proc/Interfaces/SettingsFields.h"

#include <vector>

namespace Velnor::Proc {

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
    VELNOR_FIELD(int, SmallestFace, 40, "side of the smallest face that is looked for", Unit("pixels"), Range(20, 2000),
                 AcceptsFrom(1))
    VELNOR_FIELD(std::string, Model, "",
                 "file of the model of 68 landmarks, as dlib saves it; empty is that of Debian's package libdlib-data")
    VELNOR_FIELD(std::vector<Face>, Faces, {}, "the faces found, the largest first", Output())
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
