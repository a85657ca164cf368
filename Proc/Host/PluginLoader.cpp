#include "Proc/Host/PluginLoader.h"

#include "Proc/Host/NeededLibraries.h"
#include "Proc/Host/Registry.h"
#include "Proc/Interfaces/ProcException.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace Velnor::Proc {
namespace {

namespace fs = std::filesystem;

constexpr char const* ENTRY = "Registrator";

[[noreturn]] void Fail(fs::path const& file, std::string reason) {
    std::ranges::replace(reason, '\n', ' ');
    VELNOR_THROW(ProcException, "Plug-in " + file.string() + " cannot be loaded: " + reason);
}

/// The libraries that hold the contract between host and plug-in.
constexpr std::array<std::string_view, 3> CONTRACT_LIBRARIES{"libVelnorCore.so", "libVelnorProc.so",
                                                             "libVelnorHost.so"};

/// Of a library of the contract, what follows its name: ".1", or nothing in the days before it had a version. Null for
/// any other library.
std::optional<std::string_view> FindContractVersion(std::string_view needed) {
    for (std::string_view const library : CONTRACT_LIBRARIES)
        if (needed.starts_with(library) && (needed.size() == library.size() || needed[library.size()] == '.'))
            return needed.substr(library.size());
    return std::nullopt;
}

/// A plug-in that was built against another contract would call the wrong operations of the host's objects, and they
/// its: the process would end by a signal, perhaps in the plug-in's static initialisers already. So this is told from
/// the file, before the system's loader is asked.
void RequireOurContract(fs::path const& file) {
    std::string const ours = "." VELNOR_CONTRACT_VERSION;
    bool isPlugin = false;
    for (std::string const& needed : ReadNeededLibraries(file)) {
        std::optional<std::string_view> const version = FindContractVersion(needed);
        if (!version) continue;
        isPlugin = true;
        if (*version == ours) continue;
        std::string const theirs =
            version->empty() ? "without a version" : "version " + std::string(version->substr(1));
        VELNOR_THROW(ProcException, "it was built against the contract " + theirs + " (it needs " + needed +
                                        "), and this host has version " VELNOR_CONTRACT_VERSION ".");
    }
    if (!isPlugin)
        VELNOR_THROW(ProcException, "it links to none of the libraries of the contract, such as libVelnorProc.so" +
                                        ours + ", so it is no plug-in for this host.");
}

/// The loader's last error, without the path that it mostly begins with.
std::string GetLoaderError(std::string const& path) {
    char const* const error = dlerror();
    std::string const text = error == nullptr ? "the loader gives no reason" : error;
    std::string const prefix = path + ": ";
    return text.starts_with(prefix) ? text.substr(prefix.size()) : text;
}

/// An open library, closed at the end unless it is kept.
class Library {
public:
    explicit Library(fs::path const& file) {
        std::error_code error;
        // A bare name would be looked up along the loader's search path, and might be another file.
        std::string const path = fs::absolute(file, error).string();
        if (!fs::exists(path, error)) Fail(file, "there is no such file.");
        try {
            RequireOurContract(path);
        } catch (ProcException const& problem) {
            Fail(file, DescribeException(problem));
        }
        handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (handle == nullptr) Fail(file, GetLoaderError(path) + ".");
    }
    ~Library() {
        if (handle != nullptr) dlclose(handle);
    }
    Library(Library const&) = delete;
    Library& operator=(Library const&) = delete;

    RegistratorFunction GetEntry() const { return reinterpret_cast<RegistratorFunction>(dlsym(handle, ENTRY)); }
    void Keep() { handle = nullptr; }

private:
    void* handle = nullptr;
};

/// What the plug-in's entry threw, as text; empty when it returned. The exception may be of the plug-in's own type, so
/// it ends here, before its library can be closed.
std::string Register(RegistratorFunction entry, Registry& registry) {
    try {
        entry(&registry);
        return {};
    } catch (...) {
        std::string const description = DescribeCurrentException();
        return description.empty() ? "an exception without a description" : description;
    }
}

/// How people are told where an effect comes from: plug-ins that came with the host by name, all others by path.
std::string GetOrigin(fs::path const& file) {
    std::error_code error;
    bool const isInstalled = fs::equivalent(file.parent_path(), GetInstalledFolder() / "plugins", error);
    return isInstalled ? file.filename().string() : fs::absolute(file, error).lexically_normal().string();
}

} // namespace

void LoadPluginFile(fs::path const& file, Registry& registry) {
    Library library(file);
    RegistratorFunction const entry = library.GetEntry();
    if (entry == nullptr) Fail(file, std::string("it has no entry ") + ENTRY + ", so it is no plug-in.");
    Registry staged(GetOrigin(file), &registry);
    std::string const error = Register(entry, staged);
    if (!error.empty()) Fail(file, std::string("its ") + ENTRY + " failed: " + error);
    if (staged.GetAll().empty()) Fail(file, std::string("its ") + ENTRY + " registered no effect.");
    registry.Merge(staged);
    library.Keep();
}

fs::path GetInstalledFolder() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void const*>(&GetInstalledFolder), &info) == 0 || info.dli_fname == nullptr) return {};
    std::error_code error;
    fs::path const library = fs::canonical(info.dli_fname, error);
    return error ? fs::path() : library.parent_path() / "velnor";
}

std::vector<fs::path> FindInstalledPlugins() {
    fs::path const folder = GetInstalledFolder();
    if (folder.empty()) return {};
    std::error_code error;
    std::vector<fs::path> files;
    for (fs::directory_iterator at(folder / "plugins", error), end; !error && at != end; at.increment(error))
        if (at->path().extension() == ".so") files.push_back(at->path());
    std::ranges::sort(files);
    return files;
}

} // namespace Velnor::Proc
