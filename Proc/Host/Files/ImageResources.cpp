#include "Proc/Host/Files/ImageResources.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace Velnor::Proc::Files {
namespace {

constexpr std::string_view SIGNATURE = "8BIM";
constexpr std::array<unsigned, 7> LEFT_OUT{1005, 1033, 1036, 1058, 1059, 1060, 1061};

unsigned GetBigEndian(std::string const& block, std::size_t at, std::size_t bytes) {
    unsigned value = 0;
    for (std::size_t i = 0; i < bytes; ++i) value = value << 8 | static_cast<unsigned char>(block[at + i]);
    return value;
}

constexpr std::size_t RoundUpToEven(std::size_t bytes) { return bytes + bytes % 2; }

std::string Without(std::string const& block, std::span<unsigned const> identifiers) {
    std::string rest;
    for (ImageResource const& resource : ParseImageResources(block))
        if (std::ranges::find(identifiers, resource.identifier) == identifiers.end()) rest += resource.whole;
    return rest;
}

} // namespace

std::vector<ImageResource> ParseImageResources(std::string const& block) {
    constexpr std::size_t NAME_AT = 6;
    std::vector<ImageResource> resources;
    std::size_t at = 0;
    while (at + NAME_AT < block.size() && block.compare(at, SIGNATURE.size(), SIGNATURE) == 0) {
        std::size_t const head = NAME_AT + RoundUpToEven(1 + GetBigEndian(block, at + NAME_AT, 1)) + 4;
        if (at + head > block.size()) break;
        std::size_t const size = GetBigEndian(block, at + head - 4, 4);
        if (at + head + size > block.size()) break;
        std::string whole = block.substr(at, head + size);
        whole.resize(head + RoundUpToEven(size));
        resources.push_back({GetBigEndian(block, at + SIGNATURE.size(), 2), whole, block.substr(at + head, size)});
        at += whole.size();
    }
    return resources;
}

bool AreImageResourcesWhole(std::string const& block) {
    std::size_t bytes = 0;
    for (ImageResource const& resource : ParseImageResources(block)) bytes += resource.whole.size();
    return bytes >= block.size() || block.compare(bytes, SIGNATURE.size(), SIGNATURE) != 0; // Some are filled up.
}

std::string WrapIptc(std::string const& iptc) {
    auto const size = static_cast<std::uint32_t>(iptc.size());
    std::string resource = std::string(SIGNATURE) + std::string("\x04\x04\0\0", 4);
    for (int shift = 24; shift >= 0; shift -= 8) resource += static_cast<char>(size >> shift);
    resource += iptc;
    resource.resize(RoundUpToEven(resource.size()));
    return resource;
}

std::string FindIptc(std::string const& block) {
    for (ImageResource const& resource : ParseImageResources(block))
        if (resource.identifier == IPTC_RESOURCE) return resource.data;
    return {};
}

std::string DropIptc(std::string const& block) { return Without(block, std::span(&IPTC_RESOURCE, 1)); }

std::string CleanImageResources(std::string const& block) { return Without(block, LEFT_OUT); }

} // namespace Velnor::Proc::Files
