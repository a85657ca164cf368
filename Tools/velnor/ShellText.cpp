#include "Tools/velnor/ShellText.h"

namespace Velnor::Tool {

std::string QuoteForShell(std::string_view text) {
    constexpr std::string_view PLAIN = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_./:=,%@+#";
    bool const isPlain = !text.empty() && text.front() != '#' && text.find_first_not_of(PLAIN) == text.npos;
    if (isPlain) return std::string(text);
    std::string quoted;
    for (char const c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return "'" + quoted + "'";
}

} // namespace Velnor::Tool
