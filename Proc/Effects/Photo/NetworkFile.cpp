#include "Proc/Effects/Photo/NetworkFile.h"

#include "Proc/Host/PluginLoader.h"
#include "Proc/Interfaces/NetworkMissingException.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <system_error>

namespace Velnor::Proc {
namespace {

namespace fs = std::filesystem;

std::string ListInstalled() {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator at(GetNetworksFolder(), error), end; !error && at != end; at.increment(error))
        names.push_back(at->path().filename().string());
    std::ranges::sort(names);
    std::string list;
    for (std::string const& name : names) list += (list.empty() ? "" : ", ") + name;
    return list.empty() ? "none" : list;
}

} // namespace

fs::path GetNetworksFolder() { return GetInstalledFolder() / "networks"; }

fs::path FindNetwork(std::string const& model) {
    if (model.empty())
        VELNOR_THROW(EffectException, "No network is set: the model is the path of an ONNX file, or the name of an "
                                      "installed network. Installed: " +
                                          ListInstalled() + ".");
    fs::path const given = model;
    bool const isInstalled = !given.has_parent_path();
    fs::path const file = isInstalled ? GetNetworksFolder() / given : given;
    std::error_code error;
    if (fs::is_regular_file(file, error)) return file;
    if (fs::exists(file, error)) VELNOR_THROW(EffectException, "The network " + file.string() + " is not a file.");
    VELNOR_THROW(NetworkMissingException, "There is no network " + file.string() +
                                              (isInstalled ? "; installed are: " + ListInstalled() : std::string()) +
                                              ".");
}

std::vector<unsigned char> ReadNetwork(fs::path const& file) {
    std::error_code error;
    std::uintmax_t const size = fs::file_size(file, error);
    if (error)
        VELNOR_THROW(EffectException, "The network " + file.string() + " cannot be read: " + error.message() + ".");
    // What the format's messages can be at most.
    constexpr std::uintmax_t LARGEST = 0x7fffffff;
    if (size == 0 || size > LARGEST)
        VELNOR_THROW(EffectException, "The network " + file.string() + " cannot be read: it has " +
                                          std::to_string(size) + " bytes; 1 to " + std::to_string(LARGEST) +
                                          " are possible.");
    std::vector<unsigned char> content(static_cast<std::size_t>(size));
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    if (!stream.read(reinterpret_cast<char*>(content.data()), static_cast<std::streamsize>(size)))
        VELNOR_THROW(EffectException, "The network " + file.string() + " cannot be read: " +
                                          (errno != 0 ? std::strerror(errno) : "it became shorter") + ".");
    return content;
}

} // namespace Velnor::Proc
