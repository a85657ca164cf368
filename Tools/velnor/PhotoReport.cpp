#include "Tools/velnor/PhotoReport.h"

#include "Tools/velnor/Json.h"
#include "Tools/velnor/StandardStreams.h"

#include <algorithm>
#include <cstddef>
#include <ranges>

namespace Velnor::Tool {
namespace {

Json ListFiles(std::vector<std::filesystem::path> const& files) {
    Json list = Json::array();
    for (std::filesystem::path const& file : files) list.push_back(file.string());
    return list;
}

/// Long lists, such as the counts of a histogram, are for programs: they are in the JSON alone.
bool IsForPeople(EffectResult const& result) {
    constexpr std::ptrdiff_t MOST = 32;
    return result.field->type != "list" || std::ranges::count(result.text, ',') < MOST;
}

} // namespace

void PhotoReport::Warn(std::filesystem::path const& input, std::vector<std::string> const& texts) {
    for (std::string const& text : texts)
        if (std::string const line = NamePhoto(input) + ": " + text; std::ranges::count(warnings, line) == 0)
            warnings.push_back(line);
}

std::string FormatResults(PhotoReport const& photo) {
    std::string text;
    for (PhotoReport::Found const& found : photo.found) {
        std::string place;
        if (found.place) place = " at " + std::to_string(found.place->x) + "," + std::to_string(found.place->y);
        for (EffectResult const& result : found.results | std::views::filter(IsForPeople))
            text += NamePhoto(found.input) + place + ": " + found.effect + ": " + result.field->name + "=" +
                    result.text + "\n";
    }
    return text;
}

std::string FormatJson(PhotoReport const& photo) {
    Json entry;
    entry["input"] = photo.inputs.front().string();
    if (photo.inputs.size() > 1) entry["inputs"] = ListFiles(photo.inputs);
    entry["outputs"] = ListFiles(photo.outputs);
    entry["code"] = static_cast<int>(photo.report.code);
    if (!photo.report.text.empty()) entry["error"] = photo.report.text;
    if (!photo.skipped.empty()) entry["skipped"] = photo.skipped;
    if (!photo.warnings.empty()) entry["warnings"] = photo.warnings;
    entry["results"] = Json::array();
    for (PhotoReport::Found const& found : photo.found) {
        Json result{{"effect", found.effect}};
        if (photo.inputs.size() > 1) result["input"] = found.input.string();
        if (found.place) result["at"] = {found.place->x, found.place->y};
        for (EffectResult const& one : found.results) result["values"][one.field->name] = ToJson(*one.field, one.text);
        entry["results"].push_back(result);
    }
    return WriteLine(entry);
}

} // namespace Velnor::Tool
