#pragma once

#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Interfaces/SettingsText.h"

#include <string>
#include <string_view>

namespace Velnor::Proc {

/// Throws EffectException, naming the setting, its value and the range, for a value outside low to high, or no number.
inline void RequireSetting(std::string_view effect, std::string_view setting, double value, double low, double high) {
    if (value >= low && value <= high) return;
    auto const text = [](double number) { return TextForm<double>::Print(number); };
    VELNOR_THROW(EffectException, "The " + std::string(setting) + " of the " + std::string(effect) + " effect is " +
                                      text(value) + "; " + text(low) + " to " + text(high) + " are possible.");
}

} // namespace Velnor::Proc
