#pragma once

#include "Proc/Interfaces/GradientStops.h"
#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// POSITION:COLOUR, separated by commas: "0:#102040,128:#c08040,256:#ffffff".
template <>
struct TextForm<GradientStops> {
    static constexpr std::string_view TYPE = "gradient";
    static GradientStops Parse(std::string_view text) {
        GradientStops stops;
        for (std::string_view stop : Details::SplitList(text, ',')) {
            auto const parts = Details::SplitList(stop, ':');
            if (parts.size() != 2) Details::ThrowText("\"" + std::string(stop) + "\" is no stop such as 128:#c08040");
            auto const position = static_cast<std::uint16_t>(Details::ParseInteger(parts[0], 0, 256));
            if (!stops.emplace(position, TextForm<Color>::Parse(parts[1])).second)
                Details::ThrowText("has two stops at " + std::string(parts[0]));
        }
        if (stops.empty()) Details::ThrowText("needs at least one stop such as 128:#c08040");
        return stops;
    }
    static std::string Print(GradientStops const& stops) {
        std::string text;
        for (auto const& [position, color] : stops) {
            if (!text.empty()) text += ',';
            text += std::to_string(position) + ":" + TextForm<Color>::Print(color);
        }
        return text;
    }
};

/// Settings of Gradient.
class VELNOR_API SettingsEffectGradient final : public SettingsOf<SettingsEffectGradient> {
public:
    /// Deep blue in the shadows, over ochre, to white.
    static GradientStops DefaultStops() {
        return {
            {0, Color(0x40, 0x20, 0x10, 255)}, {128, Color(0x40, 0x80, 0xc0, 255)}, {256, Color(255, 255, 255, 255)}};
    }

    VELNOR_SETTINGS(SettingsEffectGradient, "Colours the picture by its brightness, through a gradient.")
    VELNOR_FIELD(GradientStops, Stops, DefaultStops(), "colours by brightness, 0 (black) to 256 (white)",
                 Example("0:#102040,128:#c08040,256:#ffffff"), AcceptsFilled())
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
