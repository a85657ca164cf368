#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace Velnor::Proc::Check {

/// What a process tells its parent, line by line.
class Speech {
public:
    explicit Speech(int pipe) : stream(pipe) {}
    /// One line of a kind, a word, and a text, whose control characters become spaces.
    void Say(std::string const& kind, std::string text) const;

private:
    int stream;
};

/// How a process ended.
struct Ending {
    enum class Kind { Done, Threw, Died, Hung };
    Kind kind = Kind::Done;
    std::string text; ///< What it threw, or how it died: "died by signal 11 (Segmentation fault)". Empty when done.
};

/// Does work that may go wrong in a process of its own, which cannot harm this one.
/// @param work    what the other process does; what it prints to standard output goes to standard error
/// @param onLine  called here for each line that it says, with kind and text
/// @param silence how long it may take from a line to the next, before it is killed
/// Throws std::system_error when there is no process to be had. To be called while this process has one thread.
Ending RunApart(std::function<void(Speech const&)> const& work,
                std::function<void(std::string const& kind, std::string const& text)> const& onLine,
                std::chrono::seconds silence);

} // namespace Velnor::Proc::Check
