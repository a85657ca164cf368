#include "Tools/velnor/OutputPolicy.h"

#include <optional>
#include <system_error>

namespace Velnor::Tool {
namespace {

namespace fs = std::filesystem;

/// Whether the one has changed since the other was written. One that is not there has not.
bool IsNewer(fs::path const& one, fs::file_time_type other) {
    std::error_code error;
    fs::file_time_type const time = fs::last_write_time(one, error);
    return !error && time > other;
}

std::optional<fs::path> FindNewer(std::vector<fs::path> const& files, fs::file_time_type time) {
    for (fs::path const& file : files)
        if (IsNewer(file, time)) return file;
    return std::nullopt;
}

} // namespace

OutputPolicy::OutputPolicy(BatchOptions const& batchOptions, bool overwrite,
                           std::vector<std::string> const& furtherSources)
    : options(batchOptions), replaces(overwrite), sources(furtherSources.begin(), furtherSources.end()) {}

OutputPolicy::Judgement OutputPolicy::Judge(fs::path const& output, std::vector<fs::path> const& inputs) const {
    std::error_code error;
    if (!fs::exists(fs::symlink_status(output, error))) return {Verdict::Write, "it is not there"};
    if (replaces) return {Verdict::Replace, "it is there, and --force replaces it"};
    if (options.skipsExisting) return {Verdict::Leave, "it is there"};
    if (!options.updates) return {Verdict::Refuse, "it exists already; --force replaces it"};
    fs::file_time_type const time = fs::last_write_time(output, error);
    if (error) return {Verdict::Replace, "its time is not known"};
    std::optional<fs::path> newer = FindNewer(inputs, time);
    if (!newer) newer = FindNewer(sources, time);
    if (newer) return {Verdict::Replace, newer->string() + " is newer"};
    return {Verdict::Leave, "it is newer than what it is made from"};
}

} // namespace Velnor::Tool
