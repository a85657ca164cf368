#include "Proc/Host/PluginPath.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>
#include <system_error>

namespace Velnor::Proc {
namespace {

namespace fs = std::filesystem;

constexpr char const* VARIABLE = "VELNOR_PLUGIN_PATH";

/// Empty where it is not set, and in a process with more rights than its caller, who must not choose what runs in it.
std::string GetVariable(char const* name) {
    char const* const value = secure_getenv(name);
    return value == nullptr ? "" : value;
}

/// Why others than the user and root decide what is there; empty when they do not.
std::string FindStranger(fs::path const& place) {
    struct stat facts {};
    if (stat(place.c_str(), &facts) != 0) return std::string("cannot be looked at: ") + std::strerror(errno);
    if (facts.st_uid != geteuid() && facts.st_uid != 0) return "belongs to another user";
    bool const isSticky = S_ISDIR(facts.st_mode) && (facts.st_mode & S_ISVTX) != 0;
    return (facts.st_mode & S_IWOTH) != 0 && !isSticky ? "may be written to by everybody" : "";
}

/// Why a file or folder, or what it stands in, cannot be trusted. A place that everybody may make files in is none for
/// plug-ins, even where they cannot replace each other's.
/// @param place  without symbolic links
std::string FindFault(fs::path const& place) {
    struct stat facts {};
    if (stat(place.c_str(), &facts) == 0 && (facts.st_mode & S_IWOTH) != 0) return "it may be written to by everybody";
    for (fs::path above = place;; above = above.parent_path()) {
        std::string const fault = FindStranger(above);
        if (!fault.empty()) return (above == place ? "it " : above.string() + " ") + fault;
        if (above == above.parent_path()) return "";
    }
}

class Search {
public:
    /// Of a missing folder nothing is said unless it was asked for.
    void LookIn(fs::path const& folder, bool isAskedFor) {
        std::error_code error;
        if (!folder.is_absolute()) return Refuse(folder, "it is no absolute path");
        fs::path const real = fs::canonical(folder, error);
        if (error) {
            if (isAskedFor || error != std::errc::no_such_file_or_directory) Refuse(folder, error.message());
            return;
        }
        if (std::string const fault = FindFault(real); !fault.empty()) return Refuse(folder, fault);
        std::vector<fs::path> libraries;
        fs::directory_iterator at(real, error);
        for (fs::directory_iterator const end; !error && at != end; at.increment(error))
            if (at->path().extension() == ".so") libraries.push_back(at->path());
        if (error) return Refuse(folder, error.message());
        std::ranges::sort(libraries);
        for (fs::path const& library : libraries) Take(library);
    }

    PluginPath found;

private:
    void Take(fs::path const& library) {
        std::error_code error;
        fs::path const real = fs::canonical(library, error);
        if (error) return Refuse(library, error.message());
        if (std::string const fault = FindFault(real); !fault.empty()) return Refuse(library, fault);
        if (std::ranges::find(found.files, real) == found.files.end()) found.files.push_back(real);
    }

    void Refuse(fs::path const& place, std::string const& reason) {
        found.refusals.push_back("Plug-ins of " + place.string() + " are not loaded: " + reason + ".");
    }
};

std::vector<std::string> SplitPath(std::string_view path) {
    std::vector<std::string> folders;
    while (!path.empty()) {
        std::size_t const colon = std::min(path.find(':'), path.size());
        if (colon > 0) folders.emplace_back(path.substr(0, colon)); // Nothing between two colons is no folder.
        path.remove_prefix(std::min(colon + 1, path.size()));
    }
    return folders;
}

/// Null where the system tells of no home. A relative folder in the variable counts as none: it would depend on where
/// velnor is called.
std::optional<fs::path> GetOwnFolder() {
    fs::path data = GetVariable("XDG_DATA_HOME");
    if (!data.is_absolute()) {
        fs::path const home = GetVariable("HOME");
        if (!home.is_absolute()) return std::nullopt;
        data = home / ".local" / "share";
    }
    return data / "velnor" / "plugins";
}

} // namespace

PluginPath FindUserPlugins() {
    Search search;
    for (std::string const& folder : SplitPath(GetVariable(VARIABLE))) search.LookIn(folder, true);
    if (std::optional<fs::path> const own = GetOwnFolder()) search.LookIn(*own, false);
    return search.found;
}

} // namespace Velnor::Proc
