#include "Proc/Host/Files/VipsSupport.h"

#include "Proc/Host/PictureFile.h"

#include <glog/logging.h>

#include <mutex>

namespace Velnor::Proc::Files {
namespace {

constexpr int LOG_LEVEL = 30;

void LogMessage(char const*, GLogLevelFlags, char const* message, void*) { VLOG(LOG_LEVEL) << "libvips: " << message; }

void Start() {
    if (VIPS_INIT("velnor") != 0)
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
