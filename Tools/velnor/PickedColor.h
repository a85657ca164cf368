#pragma once

#include "Proc/Interfaces/Color.h"
#include "Proc/Interfaces/IEffectFactory.h"

#include <string>
#include <string_view>

namespace Velnor::Tool {

/// A place in a picture as it is typed, "120,80" in pixels from the left and the top or "30%,12.5%" of the sides.
struct PickedPlace {
    struct Length {
        double value = 0;
        bool isPercentage = false;
    };
    Length x, y;
    std::string text; ///< As typed.
};

/// Throws Proc::SettingsTextException for text of another form.
PickedPlace ParsePickedPlace(std::string_view text);

/// The mean colour of a small disc about the place, of a radius of 0.5 % of the shorter side and of 2 pixels at
/// least, cut off at the picture's edges. Transparency does not count. Throws Failure (wrong call) for a place
/// outside the picture.
Proc::Color PickColor(Proc::IDataVideo const& picture, PickedPlace const& place, Proc::IEffectFactory& factory);

} // namespace Velnor::Tool
