#pragma once

#include "Tools/velnor/ExitCodes.h"
#include "Tools/velnor/JournalFile.h"
#include "Tools/velnor/OutputNames.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Velnor::Tool {

/// What a batch has done, kept in a file so that the same call goes on where it was stopped, at whatever moment. For
/// each photograph that is over there is a line: its name, size and time of change, the hash of the effects and the
/// options that it went through, its outputs and its code. Another file, beside it and with ".begun" behind its name,
/// tells which outputs were about to be written: an output that is there and has no line yet is known by it. It goes
/// when the batch is over.
class Journal {
public:
    /// Throws what JournalFile throws.
    /// @param chainHash  of all that the outputs depend on beside the photographs
    Journal(std::filesystem::path const& path, std::string chainHash, JournalFile::Use use);

    struct Past {
        Json photo; ///< The photograph as it is now, for the notes about it.
        bool isDone = false;
        std::string reason; ///< Why it counts as done.
        std::vector<std::filesystem::path>
            ours; ///< Outputs that a killed process wrote, if the photograph is not done.
    };
    /// What has become of the photograph before. One that a killed process had all but done is noted as done.
    Past Recall(OutputPlan const& plan);

    void NoteBegin(Past const& past, std::vector<std::filesystem::path> const& outputs);
    void NoteEnd(OutputPlan const& plan, Past const& past, std::vector<std::filesystem::path> const& outputs,
                 ExitCode code);

    void End(); ///< Nothing is under way any more, and nothing half done.

private:
    Json Describe(OutputPlan const& plan) const;
    bool IsDone(OutputPlan const& plan, Json const& photo) const;
    void RecallBegun(OutputPlan const& plan, Past& past) const;

    std::filesystem::path const begunPath;
    std::string const chain;
    bool const isWritable;
    JournalFile done;
    JournalFile begun;
};

/// The hash of texts, each with its end, as 16 digits.
std::string HashTexts(std::vector<std::string> const& texts);

/// A file's name, size and time of change in one text.
std::string DescribeFile(std::filesystem::path const& file);

} // namespace Velnor::Tool
