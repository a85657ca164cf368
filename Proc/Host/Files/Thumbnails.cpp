#include "Proc/Host/Files/Thumbnails.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Velnor::Proc::Files {
namespace {

/// Takes out every element of that name. One that is not closed stays.
void RemoveElement(std::string& packet, std::string const& name) {
    std::string const close = "</" + name + ">";
    std::size_t begin = 0;
    while ((begin = packet.find("<" + name, begin)) != std::string::npos) {
        std::size_t const tagEnd = packet.find('>', begin);
        if (tagEnd == std::string::npos) return;
        bool const isEmpty = packet[tagEnd - 1] == '/';
        std::size_t const end = isEmpty ? tagEnd : packet.find(close, tagEnd);
        if (end == std::string::npos) return;
        packet.erase(begin, end + (isEmpty ? 1 : close.size()) - begin);
    }
}

/// Makes the digit after each occurrence of `before` a 1; a space may stand around the equals sign of an attribute.
void ResetDigit(std::string& packet, std::string_view name) {
    for (std::size_t at = packet.find(name); at != std::string::npos; at = packet.find(name, at + 1)) {
        std::size_t value = at + name.size();
        while (value < packet.size() && std::string_view(" =>\"'\t\r\n").find(packet[value]) != std::string_view::npos)
            ++value;
        if (value < packet.size() && packet[value] >= '1' && packet[value] <= '8') packet[value] = '1';
    }
}

constexpr std::string_view SIGNATURE = "8BIM";

unsigned GetBigEndian(std::string const& block, std::size_t at, std::size_t bytes) {
    unsigned value = 0;
    for (std::size_t i = 0; i < bytes; ++i) value = value << 8 | static_cast<unsigned char>(block[at + i]);
    return value;
}

constexpr std::size_t RoundUpToEven(std::size_t bytes) { return bytes + bytes % 2; }

/// Bytes of the resource at a place: signature, identifier, padded name, size, padded data. 0 when it is damaged.
std::size_t GetResourceBytes(std::string const& block, std::size_t at) {
    constexpr std::size_t NAME_AT = 6;
    if (at + NAME_AT >= block.size() || block.compare(at, SIGNATURE.size(), SIGNATURE) != 0) return 0;
    std::size_t const nameBytes = RoundUpToEven(1 + GetBigEndian(block, at + NAME_AT, 1));
    std::size_t const head = NAME_AT + nameBytes + 4;
    if (at + head > block.size()) return 0;
    std::size_t const size = GetBigEndian(block, at + head - 4, 4);
    if (at + head + size > block.size()) return 0;
    return std::min(head + RoundUpToEven(size), block.size() - at);
}

} // namespace

std::string CleanExif(std::string const& block) {
    constexpr std::string_view PREFIX("Exif\0\0", 6);
    constexpr std::size_t ENTRY_BYTES = 12;
    std::size_t const base = block.starts_with(PREFIX) ? PREFIX.size() : 0;
    if (block.size() < base + 8) return block;
    bool const isLittleEndian = block.compare(base, 2, "II") == 0;
    auto const get = [&](std::size_t at, std::size_t bytes) {
        std::string field = block.substr(at, bytes);
        if (isLittleEndian) std::ranges::reverse(field);
        return GetBigEndian(field, 0, bytes);
    };
    std::size_t const directory = base + get(base + 4, 4);
    if (directory + 2 > block.size()) return block;
    std::size_t const next = directory + 2 + ENTRY_BYTES * get(directory, 2);
    if (next + 4 > block.size()) return block;
    std::string cleaned = block;
    return cleaned.replace(next, 4, 4, '\0');
}

std::string WrapIptc(std::string const& iptc) {
    auto const size = static_cast<std::uint32_t>(iptc.size());
    std::string resource = std::string(SIGNATURE) + std::string("\x04\x04\0\0", 4);
    for (int shift = 24; shift >= 0; shift -= 8) resource += static_cast<char>(size >> shift);
    resource += iptc;
    resource.resize(RoundUpToEven(resource.size()));
    return resource;
}

std::string CleanXmp(std::string const& packet) {
    std::string cleaned = packet;
    for (char const* name : {"xmp:Thumbnails", "xap:Thumbnails"}) RemoveElement(cleaned, name);
    ResetDigit(cleaned, "tiff:Orientation");
    return cleaned;
}

std::string CleanPhotoshopResources(std::string const& block) {
    constexpr unsigned THUMBNAIL_OLD = 1033;
    constexpr unsigned THUMBNAIL = 1036;
    std::size_t at = 0;
    std::string cleaned;
    while (std::size_t const bytes = GetResourceBytes(block, at)) {
        unsigned const identifier = GetBigEndian(block, at + SIGNATURE.size(), 2);
        if (identifier != THUMBNAIL && identifier != THUMBNAIL_OLD) cleaned.append(block, at, bytes);
        at += bytes;
    }
    return cleaned.append(block, at);
}

} // namespace Velnor::Proc::Files
