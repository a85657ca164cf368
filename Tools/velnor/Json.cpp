#include "Tools/velnor/Json.h"

namespace Velnor::Tool {

Json ToJson(Proc::SettingsField const& field, std::string const& text) {
    if (field.type != "number" && field.type != "integer" && field.type != "switch") return text;
    Json const value = Json::parse(text, nullptr, false);
    return value.is_discarded() ? Json(text) : value;
}

std::string Write(Json const& document) { return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n"; }

std::string WriteLine(Json const& document) {
    return document.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace Velnor::Tool
