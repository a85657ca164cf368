#include "Tools/velnor/TextWrap.h"

#include <algorithm>

namespace Velnor::Tool {
namespace {

/// Calls `take` with each part between separators.
template <class Take>
void ForEachPart(std::string_view text, char separator, Take const& take) {
    for (;;) {
        std::size_t const end = std::min(text.find(separator), text.size());
        take(text.substr(0, end));
        if (end == text.size()) return;
        text.remove_prefix(end + 1);
    }
}

/// Where the second column of an indented line begins; where the first does when there is none.
std::size_t FindColumn(std::string_view line) {
    std::size_t const first = std::min(line.find_first_not_of(' '), line.size());
    std::size_t const gap = line.find("  ", first);
    if (gap == std::string_view::npos) return first;
    return std::min(line.find_first_not_of(' ', gap), line.size());
}

} // namespace

std::string WrapParagraph(std::string_view text, std::size_t indent, std::size_t at) {
    std::string wrapped;
    bool isFirst = true;
    ForEachPart(text, ' ', [&](std::string_view word) {
        if (word.empty()) return;
        if (!isFirst && at + 1 + word.size() > HELP_WIDTH) {
            wrapped.append("\n").append(indent, ' ');
            at = indent;
        } else if (!isFirst) {
            wrapped += ' ';
            ++at;
        }
        wrapped += word;
        at += word.size();
        isFirst = false;
    });
    return wrapped;
}

std::string WrapText(std::string_view text) {
    std::string wrapped;
    std::string paragraph;
    auto const flush = [&] {
        if (!paragraph.empty()) wrapped += WrapParagraph(paragraph, 0) + "\n";
        paragraph.clear();
    };
    ForEachPart(text, '\n', [&](std::string_view line) {
        if (!line.empty() && line.front() != ' ') {
            paragraph.append(paragraph.empty() ? "" : " ").append(line);
            return;
        }
        flush();
        std::size_t const column = FindColumn(line);
        wrapped += std::string(line.substr(0, column)) + WrapParagraph(line.substr(column), column, column) + "\n";
    });
    flush();
    while (wrapped.ends_with("\n")) wrapped.pop_back();
    return wrapped;
}

std::string FormatEntry(std::string_view name, std::string_view text, std::size_t margin, std::size_t column) {
    std::string entry = std::string(margin, ' ').append(name);
    if (entry.size() + 2 > column)
        entry.append("\n").append(column, ' ');
    else
        entry.append(column - entry.size(), ' ');
    return entry + WrapParagraph(text, column, column) + "\n";
}

} // namespace Velnor::Tool
