#include "Proc/Host/Files/XmpPacket.h"

#include <glib.h>

#include <algorithm>
#include <cctype>
#include <memory>
#include <string_view>

namespace Velnor::Proc::Files {
namespace {

constexpr char const* EXTENDED_POINTER = "xmpNote:HasExtendedXMP";

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

/// Takes out a property with a simple value, which is an attribute or an element.
void RemoveProperty(std::string& packet, std::string const& name) {
    RemoveElement(packet, name);
    std::size_t const at = packet.find(name);
    std::size_t const sign = at == std::string::npos ? at : packet.find_first_not_of(" \t\r\n", at + name.size());
    if (sign == std::string::npos || packet[sign] != '=') return;
    std::size_t const quote = packet.find_first_of("\"'", sign);
    std::size_t const close = quote == std::string::npos ? quote : packet.find(packet[quote], quote + 1);
    if (close != std::string::npos) packet.erase(at, close + 1 - at);
}

/// Replaces the number of a property, which is an attribute or an element; a space may stand around the equals sign.
void SetNumber(std::string& packet, std::string_view name, std::uint32_t number) {
    constexpr std::string_view BETWEEN = " =>\"'\t\r\n";
    auto const isDigit = [](char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; };
    for (std::size_t at = packet.find(name); at != std::string::npos; at = packet.find(name, at + 1)) {
        std::size_t const value = packet.find_first_not_of(BETWEEN, at + name.size());
        if (value == std::string::npos || value == at + name.size()) continue;
        auto const begin = packet.begin() + static_cast<std::ptrdiff_t>(value);
        auto const end = std::find_if_not(begin, packet.end(), isDigit);
        if (end != begin) packet.replace(begin, end, std::to_string(number));
    }
}

/// What is inside the element rdf:RDF.
std::string_view GetInside(std::string_view packet) {
    std::size_t const open = packet.find("<rdf:RDF");
    std::size_t const begin = open == std::string_view::npos ? open : packet.find('>', open);
    std::size_t const end = packet.rfind("</rdf:RDF>");
    if (begin == std::string_view::npos || end == std::string_view::npos || end < begin) return {};
    return packet.substr(begin + 1, end - begin - 1);
}

/// A packet without its wrapping, which an extended part does not have.
std::string_view Unwrap(std::string_view packet) {
    std::size_t const begin = packet.find("<x:xmpmeta");
    std::size_t const end = packet.rfind("</x:xmpmeta>");
    if (begin == std::string_view::npos || end == std::string_view::npos || end < begin) return packet;
    return packet.substr(begin, end + std::string_view("</x:xmpmeta>").size() - begin);
}

std::string GetMd5(std::string const& text) {
    std::unique_ptr<char, decltype(&g_free)> const sum(
        g_compute_checksum_for_data(G_CHECKSUM_MD5, reinterpret_cast<guchar const*>(text.data()), text.size()),
        &g_free);
    std::string digits = sum.get();
    std::ranges::transform(digits, digits.begin(), [](unsigned char c) { return std::toupper(c); });
    return digits;
}

} // namespace

std::string CleanXmp(std::string const& packet, std::uint32_t width, std::uint32_t height) {
    std::string cleaned = packet;
    for (char const* name : {"xmp:Thumbnails", "xap:Thumbnails"}) RemoveElement(cleaned, name);
    RemoveProperty(cleaned, EXTENDED_POINTER);
    SetNumber(cleaned, "tiff:Orientation", 1);
    for (char const* name : {"tiff:ImageWidth", "exif:PixelXDimension"}) SetNumber(cleaned, name, width);
    for (char const* name : {"tiff:ImageLength", "exif:PixelYDimension"}) SetNumber(cleaned, name, height);
    return cleaned;
}

std::string LabelXmpSrgb(std::string const& packet) {
    std::string labelled = packet;
    SetNumber(labelled, "exif:ColorSpace", 1);
    SetNumber(labelled, "photoshop:ColorMode", 3);
    RemoveProperty(labelled, "photoshop:ICCProfile");
    return labelled;
}

bool NamesExtendedXmp(std::string const& packet) { return packet.find(EXTENDED_POINTER) != std::string::npos; }

std::string JoinExtendedXmp(std::string const& packet, std::string const& extended) {
    if (extended.empty()) return packet;
    std::string_view const inside = GetInside(extended);
    std::size_t const end = packet.rfind("</rdf:RDF>");
    if (inside.empty() || end == std::string::npos) return packet.empty() ? extended : packet;
    std::string joined = packet;
    joined.insert(end, inside);
    RemoveProperty(joined, EXTENDED_POINTER);
    return joined;
}

ExtendedXmp SplitExtendedXmp(std::string const& packet) {
    std::string extended(Unwrap(packet));
    std::string const identity = GetMd5(extended);
    return {"<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">"
            "<rdf:Description rdf:about=\"\" xmlns:xmpNote=\"http://ns.adobe.com/xmp/note/\" "
            "xmpNote:HasExtendedXMP=\"" +
                identity + "\"></rdf:Description></rdf:RDF></x:xmpmeta>",
            std::move(extended), identity};
}

} // namespace Velnor::Proc::Files
