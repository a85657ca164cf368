#include "Proc/Host/Files/IsoBoxes.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Velnor::Proc::Files {
namespace {

constexpr std::uint64_t SHORT_HEAD = 8;
constexpr std::uint64_t LONG_HEAD = 16;

} // namespace

/// Size 0 means to the end, 1 that a long size follows.
IsoBox ReadIsoBox(FileBytes const& file, std::uint64_t at, std::uint64_t end) {
    if (at > end || end - at < SHORT_HEAD) return {};
    std::string const head = file.Read(at, std::min(LONG_HEAD, end - at));
    if (head.size() < SHORT_HEAD) return {};
    std::uint64_t size = ToNumber(std::string_view(head).substr(0, 4));
    bool const isLong = size == 1 && head.size() == LONG_HEAD;
    if (isLong) size = ToNumber(std::string_view(head).substr(8, 8));
    if (size == 0) size = end - at;
    std::uint64_t const headBytes = isLong ? LONG_HEAD : SHORT_HEAD;
    if (size < headBytes || size > end - at) return {};
    return {head.substr(4, 4), at + headBytes, at + size};
}

std::string DescribeBrokenBox(FileBytes const& file, std::uint64_t at) {
    constexpr std::array<std::string_view, 14> KNOWN{"ftyp", "meta", "mdat", "moov", "free", "uuid", "idat",
                                                     "Exif", "xml ", "brob", "jxlc", "jxlp", "jbrd", "jxli"};
    std::string const type = file.Read(at + 4, 4);
    bool const isKnown = std::ranges::find(KNOWN, type) != KNOWN.end();
    return isKnown ? "its box " + type + " is cut short" : "";
}

} // namespace Velnor::Proc::Files
