// The catalogue of all settings classes, which the command line and the reference pages read. A class is added to one
// of the lists in Types/, and nowhere else.
#include "Proc/Interfaces/Settings.h"

#include <algorithm>
#include <iterator>

namespace Velnor::Proc {

std::vector<SettingsType const*> ListColorTypes();
std::vector<SettingsType const*> ListGeneralTypes();
std::vector<SettingsType const*> ListPhotoTypes();
std::vector<SettingsType const*> ListShapeTypes();
std::vector<SettingsType const*> ListStyleTypes();

std::vector<SettingsType const*> const& SettingsType::GetAll() {
    static std::vector<SettingsType const*> const types = [] {
        std::vector<SettingsType const*> all;
        for (auto const list : {&ListColorTypes, &ListGeneralTypes, &ListPhotoTypes, &ListShapeTypes, &ListStyleTypes})
            std::ranges::copy(list(), std::back_inserter(all));
        std::ranges::sort(all, {}, &SettingsType::classId);
        return all;
    }();
    return types;
}

SettingsType const* SettingsType::Find(std::string_view classId) {
    auto const found = std::ranges::find(GetAll(), classId, &SettingsType::classId);
    return found == GetAll().end() ? nullptr : *found;
}

} // namespace Velnor::Proc
