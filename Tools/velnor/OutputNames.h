#pragma once

#include "Tools/velnor/EffectStep.h"

#include <filesystem>
#include <string>
#include <vector>

namespace Velnor::Tool {

/// One photograph, or several that are joined, and the file that it becomes.
struct OutputPlan {
    std::vector<std::filesystem::path> inputs;
    std::filesystem::path output; ///< With {x} and {y} in the pattern, of the piece at 0, 0. Empty: none is written.
    std::string given;            ///< -o as it was typed.
    std::size_t index = 1;        ///< Of the photograph, from 1 ...
    std::size_t count = 1;        ///< ... to this.
};

/// The output of each photograph, by what -o says:
/// - a folder, named with a slash at the end or there already: the photograph's own name in it;
/// - a pattern with {name}, {ext} (the photograph's name without extension, and its extension), {index} (from 1, with
///   zeros before it so that the files sort), {x} and {y} (where in the photograph a piece of it begins, in pixels,
///   with zeros likewise);
/// - a file, for a single photograph;
/// - nothing, when no output is wanted.
/// Photographs that are joined have one output, named after the first. Throws Failure (wrong call) for any other, when
/// two photographs would become one file, and when one would replace another of the photographs.
std::vector<OutputPlan> PlanOutputs(std::vector<std::string> const& photos, std::string const& output,
                                    bool areJoined = false);

/// The files of a photograph's pieces. Throws Failure (wrong call) when two would have one name.
std::vector<std::filesystem::path> NamePieces(OutputPlan const& plan, std::vector<Place> const& places);

/// Throws before any work what would fail after it: FileOutputException for a name with an unknown extension, Failure
/// (output) for a file that exists, unless it may be replaced.
void CheckOutputs(std::vector<std::filesystem::path> const& outputs, bool replace);

} // namespace Velnor::Tool
