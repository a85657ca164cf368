#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace Velnor::Tool {

/// One photograph and the file that it becomes.
struct OutputPlan {
    std::filesystem::path input;
    std::filesystem::path output;
};

/// The output of each photograph, by what -o says:
/// - a folder, named with a slash at the end or there already: the photograph's own name in it;
/// - a pattern with {name}, {ext} (the photograph's name without extension, and its extension) and {index} (from 1, with
///   zeros before it so that the files sort);
/// - a file, for a single photograph.
/// Throws Failure (wrong call) for any other, when two photographs would become one file, and when one would replace
/// another of the photographs.
std::vector<OutputPlan> PlanOutputs(std::vector<std::string> const& photos, std::string const& output);

/// Throws before any work what would fail after it: FileOutputException for a name with an unknown extension, Failure
/// (output) for a file that exists, unless it may be replaced.
void CheckOutputs(std::vector<OutputPlan> const& plans, bool replace);

} // namespace Velnor::Tool
