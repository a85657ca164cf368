#pragma once

#include "Tools/velnor/BatchOptions.h"
#include "Tools/velnor/OutputNames.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace Velnor::Tool {

/// What is done about an output.
enum class Verdict : std::uint8_t {
    Write,   ///< Nothing is there.
    Replace, ///< What is there.
    Leave,   ///< What is there.
    Refuse,  ///< Something is there, and nobody said what to do about it.
};

/// What is done about outputs that are there already, by what the call says.
class OutputPolicy {
public:
    /// @param sources  files beside the photographs that outputs are made from
    OutputPolicy(BatchOptions const& batchOptions, bool overwrite, std::vector<std::string> const& sources);

    struct Judgement {
        Verdict verdict = Verdict::Write;
        std::string reason; ///< In words, for a dry run.
    };
    /// @param inputs  the photographs that the output is made from
    Judgement Judge(std::filesystem::path const& output, std::vector<std::filesystem::path> const& inputs) const;

private:
    BatchOptions const& options;
    bool const replaces;
    std::vector<std::filesystem::path> sources;
};

} // namespace Velnor::Tool
