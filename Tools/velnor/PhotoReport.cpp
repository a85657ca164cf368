#include "Tools/velnor/PhotoReport.h"

#include "Tools/velnor/Json.h"

#include <algorithm>

namespace Velnor::Tool {

void PhotoReport::Warn(std::vector<std::string> const& texts) {
    for (std::string const& text : texts)
        if (std::string const line = input.string() + ": " + text; std::ranges::count(warnings, line) == 0)
            warnings.push_back(line);
}

std::string FormatResults(PhotoReport const& photo) {
    std::string text;
    for (PhotoReport::Found const& found : photo.found) {
        std::string place;
        if (found.place) place = " at " + std::to_string(found.place->x) + "," + std::to_string(found.place->y);
        for (EffectResult const& result : found.results)
            text += photo.input.string() + place + ": " + found.effect + ": " + result.field->name + "=" + result.text +
                    "\n";
    }
    return text;
}

std::string FormatJson(PhotoReport const& photo) {
    Json entry;
    entry["input"] = photo.input.string();
    entry["outputs"] = Json::array();
    for (std::filesystem::path const& output : photo.outputs) entry["outputs"].push_back(output.string());
    entry["code"] = static_cast<int>(photo.report.code);
    if (!photo.report.text.empty()) entry["error"] = photo.report.text;
    if (!photo.warnings.empty()) entry["warnings"] = photo.warnings;
    entry["results"] = Json::array();
    for (PhotoReport::Found const& found : photo.found) {
        Json result{{"effect", found.effect}};
        if (found.place) result["at"] = {found.place->x, found.place->y};
        for (EffectResult const& one : found.results) result["values"][one.field->name] = ToJson(*one.field, one.text);
        entry["results"].push_back(result);
    }
    return WriteLine(entry);
}

} // namespace Velnor::Tool
