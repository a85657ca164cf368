#include "Tools/velnor/NameFilter.h"

#include <fnmatch.h>

#include <algorithm>

namespace Velnor::Tool {
namespace {

bool Matches(std::string glob, std::string const& path) {
    bool const isOfPath = glob.find('/') != std::string::npos;
    if (glob.starts_with("./")) glob.erase(0, 2);
    std::size_t const name = path.rfind('/') + 1;
    std::string const text = isOfPath ? path.substr(path.starts_with("./") ? 2 : 0) : path.substr(name);
    return fnmatch(glob.c_str(), text.c_str(), FNM_CASEFOLD) == 0;
}

bool MatchesAny(std::vector<std::string> const& globs, std::string const& path) {
    return std::ranges::any_of(globs, [&](std::string const& glob) { return Matches(glob, path); });
}

} // namespace

NameFilter::NameFilter(std::vector<std::string> const& includeGlobs, std::vector<std::string> const& excludeGlobs)
    : include(includeGlobs), exclude(excludeGlobs) {}

bool NameFilter::TakesFile(std::string const& path) const {
    return (include.empty() || MatchesAny(include, path)) && !MatchesAny(exclude, path);
}

bool NameFilter::EntersFolder(std::string const& path) const {
    return !MatchesAny(exclude, path) && !MatchesAny(exclude, path + "/");
}

} // namespace Velnor::Tool
