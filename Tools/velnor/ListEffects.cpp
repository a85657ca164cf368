#include "Tools/velnor/EffectCatalogue.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/Json.h"
#include "Tools/velnor/ListCommands.h"
#include "Tools/velnor/Suggestions.h"

#include <algorithm>
#include <array>

namespace Velnor::Tool {
namespace {

/// Lines of cells, each column as wide as its widest cell, the last one ragged.
template <std::size_t Columns>
std::string FormatTable(std::vector<std::array<std::string, Columns>> const& lines) {
    std::array<std::size_t, Columns> widths{};
    for (auto const& cells : lines)
        for (std::size_t i = 0; i < Columns; ++i) widths[i] = std::max(widths[i], cells[i].size());
    std::string text;
    for (auto const& cells : lines) {
        for (std::size_t i = 0; i + 1 < Columns; ++i)
            text += cells[i] + std::string(widths[i] + 2 - cells[i].size(), ' ');
        text += cells.back() + "\n";
    }
    return text;
}

std::string GetKindWord(Proc::EffectKind kind) {
    switch (kind) {
    case Proc::EffectKind::TwoInput:
        return "two-input";
    case Proc::EffectKind::VarInput:
        return "var-input";
    default:
        return "one-input";
    }
}

/// An effect that cannot be made is listed with the reason.
std::string GetSummary(EffectCatalogue const& catalogue, CatalogueEntry const& entry) {
    try {
        return catalogue.GetSettingsType(entry).summary;
    } catch (...) {
        return ReportCurrentException().text;
    }
}

std::string FormatAsTable(EffectCatalogue const& catalogue) {
    std::vector<std::array<std::string, 6>> lines{
        {"EFFECT", "IMPLEMENTATION", "KIND", "FROM", "CLASS", "WHAT IT DOES"}};
    for (CatalogueEntry const& entry : catalogue.GetEntries()) {
        std::string const summary = GetSummary(catalogue, entry);
        for (Proc::RegisteredEffect const& effect : entry.implementations)
            lines.push_back({entry.name, ToLower(effect.implName), GetKindWord(effect.kind), effect.origin,
                             entry.classId, summary});
    }
    return FormatTable(lines);
}

std::string FormatAsJson(EffectCatalogue const& catalogue) {
    Json document = Json::array();
    for (CatalogueEntry const& entry : catalogue.GetEntries()) {
        std::string const summary = GetSummary(catalogue, entry);
        for (Proc::RegisteredEffect const& effect : entry.implementations)
            document.push_back({{"name", entry.name},
                                {"class", entry.classId},
                                {"implementation", effect.implName},
                                {"default", &effect == &entry.GetDefault()},
                                {"kind", GetKindWord(effect.kind)},
                                {"from", effect.origin},
                                {"summary", summary}});
    }
    return Write(document);
}

} // namespace

std::string ListEffects(std::vector<std::string> const& plugins, bool asJson) {
    EffectCatalogue const catalogue(plugins);
    return asJson ? FormatAsJson(catalogue) : FormatAsTable(catalogue);
}

} // namespace Velnor::Tool
