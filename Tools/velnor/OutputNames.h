#pragma once

#include "Tools/velnor/PhotoNames.h"
#include "Tools/velnor/Pieces.h"

#include <filesystem>
#include <functional>
#include <optional>
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
    std::filesystem::path folder = {};  ///< Of the first photograph, below the folder that was given.
    std::string fallbackExtension = {}; ///< For a photograph of which the own cannot be written; with its dot.
};

/// The outputs of photographs, by what -o says:
/// - a folder, named with a slash at the end or there already: the photograph's own name in it, in the folder that it
///   has below the one that was given;
/// - a pattern with {name}, {ext} (the photograph's name without extension, and its extension), {folder} (the one that
///   it has below the one that was given), {index} (from 1, with zeros before it so that the files sort), {x} and {y}
///   (where in the photograph a piece of it begins, in pixels, with zeros likewise);
/// - a file, for a single photograph;
/// - nothing, when no output is wanted.
/// Photographs that are joined have one output, named after the first.
class OutputNaming {
public:
    /// Throws Failure (wrong call) for one file for several outputs.
    /// @param fallbackFormat  extension without its dot, of outputs of photographs of which the own cannot be written
    OutputNaming(std::string const& given, std::size_t outputsCount, std::string const& fallbackFormat = {});

    /// @param index  of the output, from 1
    /// Throws Failure (wrong call) for a pattern that makes no name.
    OutputPlan Plan(std::vector<PhotoName> const& photos, std::size_t index) const;

private:
    std::string const output;
    std::size_t const count;
    std::string const fallbackExtension;
    bool const isPattern;
    bool const isFolder;
};

/// The plans of a call in their order.
class PlanReader {
public:
    PlanReader(PhotoNames const& photos, OutputNaming const& outputNaming, bool areJoined)
        : reader(photos), naming(outputNaming), isOne(areJoined) {}
    std::optional<OutputPlan> Next();

private:
    PhotoNames::Reader reader;
    OutputNaming const& naming;
    bool const isOne;
    std::size_t index = 0;
};

/// Throws Failure (wrong call) when two photographs would become one file, and when the output of one would replace
/// another. A photograph may be replaced by its own. `makeReader` gives a reader that stands at the beginning; a number
/// of 64 bits is kept of each name.
void RequireApart(std::function<PlanReader()> const& makeReader);

/// The files of a photograph's pieces. Throws Failure (wrong call) when two would have one name.
std::vector<std::filesystem::path> NamePieces(OutputPlan const& plan, std::vector<Place> const& places);

/// Throws FileOutputException for a name with an unknown extension, and Failure (output) for one that is a folder, or,
/// unless it may be replaced, a file that is there.
void CheckOutputs(std::vector<std::filesystem::path> const& outputs, bool replace);

/// Throws Failure (output) when an output is there; says how many are.
void RequireFree(std::function<PlanReader()> const& makeReader);

} // namespace Velnor::Tool
