#pragma once

#include <CLI/App.hpp>

#include <string>
#include <vector>

namespace Velnor::Tool {

/// What a shell may put in the place of the word at the cursor.
struct Candidate {
    std::string text;
    std::string help; ///< Empty where the text says it all.
    friend bool operator==(Candidate const&, Candidate const&) = default;
};

/// The candidates for the last of the words, those after "velnor": commands, options, their values, files, effects with
/// their parameters and the values of these. All begin with what the last word holds.
std::vector<Candidate> Complete(CLI::App const& program, std::vector<std::string> const& words);

/// The script that makes bash, zsh or fish ask `velnor complete`. Throws Failure (wrong call) for another shell.
std::string FormatCompletionScript(std::string const& shell);

} // namespace Velnor::Tool
