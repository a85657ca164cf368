#include "Proc/Host/Files/VipsSupport.h"

#include "Proc/Host/PictureFile.h"

#include <glog/logging.h>

#include <dlfcn.h>
#include <filesystem>
#include <gmodule.h>
#include <mutex>
#include <string>

namespace Velnor::Proc::Files {
namespace {

constexpr int LOG_LEVEL = 30;

void LogMessage(char const*, GLogLevelFlags, char const* message, void*) { VLOG(LOG_LEVEL) << "libvips: " << message; }

/// Starts the library without its modules. They hold rarer kinds of file (HEIF, JPEG XL and others) and load forty
/// libraries, which is a third of the time of reading an ordinary photograph. The library looks for them below the
/// folder in this variable, which it would set itself.
bool InitWithoutModules() {
    constexpr char const* HOME = "VIPSHOME";
    bool const isOurs = g_getenv(HOME) == nullptr;
    if (isOurs) g_setenv(HOME, "/nonexistent", FALSE);
    bool const done = VIPS_INIT("velnor") == 0;
    if (isOurs) g_unsetenv(HOME);
    return done;
}

/// Loads the modules that stand beside the library. One that cannot be loaded is one kind of file less.
void LoadModules() {
    Dl_info library{};
    if (dladdr(reinterpret_cast<void*>(&vips_init), &library) == 0 || library.dli_fname == nullptr) return;
    std::string const version = std::to_string(vips_version(0)) + "." + std::to_string(vips_version(1));
    auto const folder = std::filesystem::path(library.dli_fname).parent_path() / ("vips-modules-" + version);
    std::error_code error;
    for (auto const& entry : std::filesystem::directory_iterator(folder, error)) {
        GModule* const module = g_module_open(entry.path().c_str(), G_MODULE_BIND_LAZY);
        if (module != nullptr) g_module_make_resident(module);
    }
    vips_block_untrusted_set(TRUE);
}

void Start() {
    if (!InitWithoutModules())
        VELNOR_THROW(FileException,
                     "Picture files cannot be opened: the file library does not start: " + TakeError() + ".");
    vips_cache_set_max(0);
    vips_block_untrusted_set(TRUE);
    auto const everything = static_cast<GLogLevelFlags>(G_LOG_LEVEL_MASK | G_LOG_FLAG_FATAL | G_LOG_FLAG_RECURSION);
    g_log_set_handler("VIPS", everything, LogMessage, nullptr);
}

} // namespace

void StartVips() {
    static std::once_flag started;
    std::call_once(started, Start);
}

void LoadRarerKinds() {
    static std::once_flag loaded;
    std::call_once(loaded, LoadModules);
}

std::string TakeError() {
    std::unique_ptr<char, decltype(&g_free)> const buffer(vips_error_buffer_copy(), &g_free);
    std::string text = buffer.get();
    text = text.substr(0, text.find('\n'));
    // "VipsJpeg: Premature end of input file": a person is not helped by where in the library that was found.
    std::size_t const colon = text.find(": ");
    if (colon != std::string::npos && text.find(' ') > colon) text.erase(0, colon + 2);
    while (!text.empty() && (text.back() == '.' || text.back() == ' ')) text.pop_back();
    return text.empty() ? "the file library gives no reason" : text;
}

} // namespace Velnor::Proc::Files
