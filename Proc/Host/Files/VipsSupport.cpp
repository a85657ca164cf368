#include "Proc/Host/Files/VipsSupport.h"

#include "Core/Processors.h"
#include "Proc/Host/FatalError.h"
#include "Proc/Host/Files/Loaders.h"
#include "Proc/Host/MemoryRoom.h"
#include "Proc/Host/PictureFile.h"

#include <glog/logging.h>

#include <condition_variable>
#include <cstdint>
#include <dlfcn.h>
#include <filesystem>
#include <gmodule.h>
#include <mutex>
#include <string>
#include <utility>

namespace Velnor::Proc::Files {
namespace {

constexpr int LOG_LEVEL = 30;

/// What a module and the codecs under it take to load and to set themselves up.
constexpr std::uint64_t MODULE_ROOM = 64 << 20;

thread_local bool hasWarned = false;

/// Who works on the library.
struct Turns {
    std::mutex mutex;
    std::condition_variable changed;
    unsigned atWork = 0;
    unsigned waitingToBeAlone = 0;
    bool isOneAlone = false;
    std::uint64_t begun = 0;
};

Turns& GetTurns() {
    static Turns turns;
    return turns;
}

/// GLib ends the process when this returns from a fatal message. With the first step of the message no more memory may
/// be had, so nothing is done before it is told.
void LogMessage(char const*, GLogLevelFlags level, char const* message, void*) {
    if ((level & (G_LOG_FLAG_FATAL | G_LOG_LEVEL_ERROR)) == 0) {
        hasWarned = hasWarned || (level & G_LOG_LEVEL_WARNING) != 0;
        VLOG(LOG_LEVEL) << "libvips: " << message;
        return;
    }
    if (FatalErrorHandler const handler = GetFatalErrorHandler()) handler(message);
}

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

/// Loads the modules for the rarer kinds that are read, which stand beside the library. One that cannot be loaded is
/// one kind of file less.
void LoadModules() {
    Dl_info library{};
    if (dladdr(reinterpret_cast<void*>(&vips_init), &library) == 0 || library.dli_fname == nullptr) return;
    std::string const version = std::to_string(vips_version(0)) + "." + std::to_string(vips_version(1));
    auto const folder = std::filesystem::path(library.dli_fname).parent_path() / ("vips-modules-" + version);
    for (char const* const name : {"vips-heif.so", "vips-jxl.so"}) {
        RequireRoom(MODULE_ROOM);
        GModule* const module = g_module_open((folder / name).c_str(), G_MODULE_BIND_LAZY);
        if (module != nullptr) g_module_make_resident(module);
    }
    OpenReadLoaders();
}

void Start() {
    if (!InitWithoutModules())
        VELNOR_THROW(FileException,
                     "Picture files cannot be opened: the file library does not start: " + TakeError() + ".");
    vips_cache_set_max(0);
    vips_concurrency_set(static_cast<int>(Core::GetThreadsPerPicture()));
    CloseOtherLoaders();
    auto const everything = static_cast<GLogLevelFlags>(G_LOG_LEVEL_MASK | G_LOG_FLAG_FATAL | G_LOG_FLAG_RECURSION);
    for (char const* const domain : {"VIPS", "GLib", "GLib-GObject", "GModule"})
        g_log_set_handler(domain, everything, LogMessage, nullptr);
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

LibraryTurn::LibraryTurn() {
    Turns& turns = GetTurns();
    std::unique_lock lock(turns.mutex);
    turns.changed.wait(lock, [&] { return !turns.isOneAlone && turns.waitingToBeAlone == 0; });
    hasMet = turns.atWork++ > 0;
    number = ++turns.begun;
}

LibraryTurn::~LibraryTurn() {
    Turns& turns = GetTurns();
    std::lock_guard const lock(turns.mutex);
    if (isAlone)
        turns.isOneAlone = false;
    else
        --turns.atWork;
    turns.changed.notify_all();
}

bool LibraryTurn::HadCompany() const {
    Turns& turns = GetTurns();
    std::lock_guard const lock(turns.mutex);
    return hasMet || turns.begun != number;
}

void LibraryTurn::GoAlone() {
    Turns& turns = GetTurns();
    std::unique_lock lock(turns.mutex);
    --turns.atWork;
    ++turns.waitingToBeAlone;
    turns.changed.notify_all();
    turns.changed.wait(lock, [&] { return turns.atWork == 0 && !turns.isOneAlone; });
    --turns.waitingToBeAlone;
    turns.isOneAlone = true;
    isAlone = true;
}

bool TakeWarned() { return std::exchange(hasWarned, false); }

std::string TakeError() {
    std::unique_ptr<char, decltype(&g_free)> const buffer(vips_error_buffer_copy(), &g_free);
    std::string text = buffer.get();
    // A decoder that looks for more at the end of its file is no failure yet, but stands before the reason.
    std::size_t const line = text.find('\n') + 1;
    if (text.substr(0, line).find("bad seek") != std::string::npos && line < text.size()) text.erase(0, line);
    text = text.substr(0, text.find('\n'));
    // "VipsJpeg: Premature end of input file": a person is not helped by where in the library that was found.
    std::size_t const colon = text.find(": ");
    if (colon != std::string::npos && text.find(' ') > colon) text.erase(0, colon + 2);
    while (!text.empty() && (text.back() == '.' || text.back() == ' ')) text.pop_back();
    if (text.starts_with("bad seek")) return "it ends before its data does";
    return text.empty() ? "the file library gives no reason" : text;
}

std::string GetBlob(VipsImage* image, char const* name) {
    void const* data = nullptr;
    std::size_t length = 0;
    if (vips_image_get_typeof(image, name) != VIPS_TYPE_BLOB || vips_image_get_blob(image, name, &data, &length) != 0)
        return {};
    return {static_cast<char const*>(data), length};
}

} // namespace Velnor::Proc::Files
