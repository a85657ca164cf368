#pragma once

#include <string>
#include <vector>

namespace Velnor::Tool {

/// Which names --include and --exclude leave. Letters match in either case. A glob with a slash is about the path, as
/// it was given or below the folder that was given, and its stars stand for slashes too; any other is about the name
/// alone.
class NameFilter {
public:
    NameFilter(std::vector<std::string> const& includeGlobs, std::vector<std::string> const& excludeGlobs);

    bool HasIncludes() const { return !include.empty(); }
    bool TakesFile(std::string const& path) const;
    bool EntersFolder(std::string const& path) const; ///< A folder below one that was given.

private:
    std::vector<std::string> const& include;
    std::vector<std::string> const& exclude;
};

} // namespace Velnor::Tool
