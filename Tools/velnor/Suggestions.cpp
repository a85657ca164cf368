#include "Tools/velnor/Suggestions.h"

#include <algorithm>
#include <utility>

namespace Velnor::Tool {
namespace {

/// How far from each other two words of that length may be and one still be meant by the other.
std::size_t AllowedDistance(std::size_t length) {
    constexpr std::size_t LONG_WORD = 8;
    return length >= LONG_WORD ? std::max<std::size_t>(3, length / 3) : std::max<std::size_t>(1, length / 3);
}

} // namespace

std::size_t EditDistance(std::string_view a, std::string_view b) {
    // Three rows of the table of distances between the beginnings of both: two back, one back, this one.
    std::vector<std::size_t> older(b.size() + 1), previous(b.size() + 1), row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::swap(older, previous);
        std::swap(previous, row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            std::size_t const replaced = previous[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({previous[j] + 1, row[j - 1] + 1, replaced});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], older[j - 2] + 1);
        }
    }
    return row[b.size()];
}

std::vector<std::string> FindNearest(std::string_view typed, std::vector<std::string> const& known) {
    constexpr std::size_t MOST = 3;
    constexpr std::size_t LEAST_PART = 3; // Fewer letters are a part of nearly every name.
    std::string const wanted = ToLower(typed);
    std::vector<std::pair<std::size_t, std::string>> near;
    for (std::string const& name : known) {
        std::size_t const distance = EditDistance(wanted, ToLower(name));
        std::size_t const allowed = AllowedDistance(std::max(wanted.size(), name.size()));
        bool const isPart = wanted.size() >= LEAST_PART && ToLower(name).find(wanted) != std::string::npos;
        if (distance <= allowed || isPart) near.emplace_back(isPart ? std::min(distance, allowed) : distance, name);
    }
    std::ranges::stable_sort(near, {}, &std::pair<std::size_t, std::string>::first);
    if (near.size() > MOST) near.resize(MOST);
    std::vector<std::string> names;
    std::size_t const best = near.empty() ? 0 : near.front().first;
    std::size_t const farther = best <= 1 ? 1 : 2; // A single slip leaves little doubt.
    for (auto& [distance, name] : near)
        if (distance <= best + farther) names.push_back(std::move(name));
    return names;
}

std::string SuggestNearest(std::string_view typed, std::vector<std::string> const& known, std::string_view otherwise) {
    std::vector<std::string> const nearest = FindNearest(typed, known);
    if (!nearest.empty()) return "; did you mean " + JoinAlternatives(nearest) + "?";
    if (!otherwise.empty()) return "; " + std::string(otherwise);
    return known.empty() ? std::string() : "; there is " + JoinAlternatives(known, "and");
}

std::string JoinAlternatives(std::vector<std::string> const& names, std::string_view conjunction) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        bool const isLast = i + 1 == names.size();
        if (i > 0 && !isLast) text.append(", ");
        if (i > 0 && isLast) text.append(" ").append(conjunction).append(" ");
        text += names[i];
    }
    return text;
}

std::string ToLower(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

} // namespace Velnor::Tool
