#pragma once

#include "Tools/velnor/BatchOptions.h"
#include "Tools/velnor/PhotoNames.h"

namespace Velnor::Tool {

/// The photographs that the arguments of a call stand for, in their order:
/// - a folder, with --recursive: the files in it and below that have a photograph's extension, or that --include names,
///   by name; nothing hidden, and nothing in the folder that the outputs go to; links to folders are not followed;
/// - `@FILE`, `@-` for standard input: the names in it, a line each, or each with a zero byte behind it;
/// - a glob that the shell left, since it is quoted: the files that there are, by name;
/// - anything else, and any name of a file that is there: itself.
/// What --include and --exclude leave out is left out of all. Throws Failure: for a list that cannot be read, and when
/// nothing is left; an argument that names no photograph stays, to fail by itself.
PhotoNames FindPhotos(std::vector<std::string> const& arguments, BatchOptions const& options,
                      std::string const& output);

/// Whether a shell would have put the names of files in the place of this one.
bool IsGlob(std::string const& name);

} // namespace Velnor::Tool
