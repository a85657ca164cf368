#include "Proc/Interfaces/Settings.h"

#include <cctype>

namespace Velnor::Proc {

Settings::~Settings() = default;

std::string ToKebabCase(std::string_view name) {
    auto const isUpper = [&](std::size_t i) { return std::isupper(static_cast<unsigned char>(name[i])) != 0; };
    auto const isLower = [&](std::size_t i) {
        return i < name.size() && std::islower(static_cast<unsigned char>(name[i])) != 0;
    };
    std::string kebab;
    for (std::size_t i = 0; i < name.size(); ++i) {
        // A word begins at a capital after a small letter, and at the last capital of a run before a small letter.
        bool const begins = i > 0 && isUpper(i) && (!isUpper(i - 1) || isLower(i + 1));
        if (begins) kebab += '-';
        kebab += static_cast<char>(std::tolower(static_cast<unsigned char>(name[i])));
    }
    return kebab;
}

std::string SettingsType::GetEffectName() const {
    std::string_view name = classId;
    for (std::string_view prefix : {"SettingsEffect", "Settings"})
        if (name.starts_with(prefix)) {
            name.remove_prefix(prefix.size());
            break;
        }
    return ToKebabCase(name);
}

} // namespace Velnor::Proc
