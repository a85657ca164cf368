#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace Velnor::Tool {

enum class ProgressKind : std::uint8_t {
    Auto, ///< A line at the bottom of standard error where that is a terminal.
    Json, ///< Lines of JSON on standard error.
    None,
};

/// Which photographs a batch takes, how many at once, and which of them it leaves out.
struct BatchOptions {
    int jobs = 0; ///< 0: one a processor.
    bool isRecursive = false;
    std::vector<std::string> include; ///< Globs; empty: all.
    std::vector<std::string> exclude;
    bool skipsExisting = false;
    bool updates = false;
    bool keepsReplaced = false;
    bool isDryRun = false;
    std::string journal;        ///< File; empty: none.
    std::string fallbackFormat; ///< Extension without its dot, for photographs of which the own cannot be written.
    ProgressKind progress = ProgressKind::Auto;

    /// Whether it says what is done about outputs that are there.
    bool HandlesExisting() const { return skipsExisting || updates || !journal.empty(); }
};

/// Adds the options to a command.
void AddBatchOptions(CLI::App& command, BatchOptions& options);

/// Throws Failure (wrong call) for options that contradict each other.
/// @param overwrite  whether outputs are replaced (--force)
/// @param output     -o, empty for none
void RequireBatchOptions(BatchOptions const& options, bool overwrite, std::string const& output);

} // namespace Velnor::Tool
