#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Velnor::Tool {

/// Characters in a line of help.
inline constexpr std::size_t HELP_WIDTH = 80;

/// Text in lines of at most HELP_WIDTH characters, broken at spaces; words that are longer stand alone. Lines that
/// begin with a space keep their beginning, and what does not fit goes on under their second column, or under their
/// first. Others that follow one another are one paragraph.
std::string WrapText(std::string_view text);

/// One paragraph, each line but the first with `indent` spaces before it; the first begins in column `at`.
std::string WrapParagraph(std::string_view text, std::size_t indent, std::size_t at = 0);

/// A name with `margin` spaces before it and a text in a column of its own, which begins below when the name is long.
std::string FormatEntry(std::string_view name, std::string_view text, std::size_t margin, std::size_t column);

} // namespace Velnor::Tool
