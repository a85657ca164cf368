#pragma once

#include <string>
#include <string_view>

namespace Velnor::Tool {

/// Makes sure that the three standard streams are open, so that no picture file becomes one of them, and that writing
/// to a pipe whose reader has gone is an error of the write and not the end of the process.
void PrepareConsole();

/// Writes to standard output. A reader that has gone away, as `head` does, wants no more: the rest is dropped. Throws
/// Failure (output) when it cannot be written for another reason.
void Print(std::string_view text);

/// Writes "velnor: text" to standard error, in one line, in a single write.
void PrintError(std::string const& text);

/// Writes to standard error as it is. What cannot be written is dropped.
void PrintAside(std::string_view text);

/// The line at the bottom of a terminal that says what is being done. Nothing is shown when standard error is no
/// terminal.
class ProgressLine {
public:
    explicit ProgressLine(bool allowed);
    ~ProgressLine() { Clear(); }
    ProgressLine(ProgressLine const&) = delete;
    ProgressLine& operator=(ProgressLine const&) = delete;

    bool IsShown() const { return isShown; }
    void Show(std::string const& text);
    void Clear(); ///< Before anything else is written.

private:
    bool const isShown;
    bool isThere = false;
};

} // namespace Velnor::Tool
