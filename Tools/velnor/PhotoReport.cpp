#include "Tools/velnor/PhotoReport.h"

#include "Tools/velnor/Json.h"

namespace Velnor::Tool {

std::string FormatResults(PhotoReport const& photo, bool namesPhoto) {
    std::string text;
    for (PhotoReport::Found const& found : photo.found)
        for (EffectResult const& result : found.results)
            text +=
                (namesPhoto ? photo.plan.input.string() + ": " : "") + result.field->name + ": " + result.text + "\n";
    return text;
}

std::string FormatJson(std::vector<PhotoReport> const& photos) {
    Json document = Json::array();
    for (PhotoReport const& photo : photos) {
        Json entry;
        entry["input"] = photo.plan.input.string();
        entry["output"] = photo.plan.output.string();
        entry["code"] = static_cast<int>(photo.report.code);
        if (!photo.report.text.empty()) entry["error"] = photo.report.text;
        entry["results"] = Json::array();
        for (PhotoReport::Found const& found : photo.found) {
            Json values;
            for (EffectResult const& result : found.results)
                values[result.field->name] = ToJson(*result.field, result.text);
            entry["results"].push_back({{"effect", found.effect}, {"values", values}});
        }
        document.push_back(entry);
    }
    return Write(document);
}

} // namespace Velnor::Tool
