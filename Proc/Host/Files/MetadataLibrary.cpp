#include "Proc/Host/Files/MetadataLibrary.h"

#include "Proc/Host/Files/ImageResources.h"

#include <exiv2/exiv2.hpp>

#include <algorithm>
#include <array>
#include <cctype>
#include <initializer_list>
#include <mutex>
#include <stdexcept>
#include <string_view>

namespace Velnor::Proc::Files {
namespace {

using Exiv2::byte;

/// The library prints to stderr, and its XMP parser is for one thread at a time, unless told otherwise.
void Start() {
    static std::once_flag started;
    std::call_once(started, [] {
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        static std::recursive_mutex mutex;
        Exiv2::XmpParser::initialize(
            [](void* user, bool isLocking) {
                auto* const xmpMutex = static_cast<std::recursive_mutex*>(user);
                isLocking ? xmpMutex->lock() : xmpMutex->unlock();
            },
            &mutex);
    });
}

byte const* AsBytes(std::string const& text) { return reinterpret_cast<byte const*>(text.data()); }
std::uint32_t SizeOf(std::string const& text) { return static_cast<std::uint32_t>(text.size()); }

Exiv2::XmpData DecodeXmp(std::string const& packet) {
    Start();
    Exiv2::XmpData values;
    if (!packet.empty() && Exiv2::XmpParser::decode(values, packet) != 0) throw std::runtime_error("XMP is damaged");
    return values;
}

std::string EncodeXmp(Exiv2::XmpData const& values) {
    std::string packet;
    if (Exiv2::XmpParser::encode(packet, values) != 0) throw std::runtime_error("XMP cannot be written");
    return packet;
}

/// The packet without the properties whose keys, in lower case, have one of the words in them.
std::string DropFromXmp(std::string const& packet, std::initializer_list<std::string_view> words) {
    Exiv2::XmpData values = DecodeXmp(packet);
    auto const isMeant = [&](Exiv2::Xmpdatum const& value) {
        std::string key = value.key();
        std::ranges::transform(key, key.begin(), [](unsigned char c) { return std::tolower(c); });
        return std::ranges::any_of(words, [&](std::string_view word) { return key.find(word) != std::string::npos; });
    };
    if (std::none_of(values.begin(), values.end(), isMeant)) return packet;
    for (auto value = values.begin(); value != values.end();)
        value = isMeant(*value) ? values.erase(value) : std::next(value);
    return EncodeXmp(values);
}

/// Tags of a TIFF file that describe how it stores its pictures, further pictures, or hold blocks of other metadata.
bool IsOfStorage(Exiv2::Exifdatum const& datum) {
    std::string const group = datum.groupName();
    if (group == "Thumbnail" || group.starts_with("SubImage") || group.starts_with("SubThumb") ||
        (group.starts_with("Image") && group != "Image"))
        return true;
    if (group != "Image") return false;
    constexpr unsigned FIRST_OF_STORAGE = 0x00FE;
    constexpr std::array<unsigned, 38> STORAGE{FIRST_OF_STORAGE, 0x00FF, 0x0100, 0x0101, 0x0102, 0x0103, 0x0106, 0x010A,
                                               0x0111,           0x0115, 0x0116, 0x0117, 0x0118, 0x0119, 0x011C, 0x0120,
                                               0x0121,           0x0124, 0x0125, 0x013D, 0x0140, 0x0142, 0x0143, 0x0144,
                                               0x0145,           0x014A, 0x0152, 0x0153, 0x0156, 0x015B, 0x0200, 0x0201,
                                               0x0202,           0x0212, 0x02BC, 0x83BB, 0x8649, 0x8773};
    return std::ranges::find(STORAGE, datum.tag()) != STORAGE.end();
}

void DropStorageTags(Exiv2::ExifData& tags) {
    for (auto tag = tags.begin(); tag != tags.end();) tag = IsOfStorage(*tag) ? tags.erase(tag) : std::next(tag);
}

} // namespace

void ReadTiffTags(std::span<unsigned char const> file, MetadataBlocks& blocks) {
    Start();
    Exiv2::ExifData tags;
    Exiv2::IptcData iptc;
    Exiv2::XmpData xmp;
    Exiv2::ByteOrder const order =
        Exiv2::TiffParser::decode(tags, iptc, xmp, file.data(), static_cast<std::uint32_t>(file.size()));
    DropStorageTags(tags);
    if (!tags.empty()) {
        Exiv2::Blob exif;
        Exiv2::ExifParser::encode(exif, order, tags);
        blocks.exif.assign(exif.begin(), exif.end());
    }
    if (iptc.empty() || !FindIptc(blocks.resources).empty()) return;
    Exiv2::DataBuf const data = Exiv2::IptcParser::encode(iptc);
    blocks.resources += WrapIptc({reinterpret_cast<char const*>(data.pData_), static_cast<std::size_t>(data.size_)});
}

std::string AddTiffTags(std::span<unsigned char> file, std::string const& exif) {
    Start();
    auto const size = static_cast<std::uint32_t>(file.size());
    if (size != file.size()) throw std::length_error("the file is longer than 4 GB");
    Exiv2::ExifData tags;
    Exiv2::IptcData iptc;
    Exiv2::XmpData xmp;
    Exiv2::ByteOrder const order = Exiv2::TiffParser::decode(tags, iptc, xmp, file.data(), size);
    xmp.usePacket(true); // As it stands in the file.
    Exiv2::ExifData added;
    Exiv2::ExifParser::decode(added, AsBytes(exif), SizeOf(exif));
    DropStorageTags(added);
    for (Exiv2::Exifdatum const& tag : added)
        if (tags.findKey(Exiv2::ExifKey(tag.key())) == tags.end()) tags.add(tag);
    Exiv2::MemIo output;
    if (Exiv2::TiffParser::encode(output, file.data(), size, order, tags, iptc, xmp) == Exiv2::wmNonIntrusive)
        return {file.begin(), file.end()};
    return {reinterpret_cast<char const*>(output.mmap()), static_cast<std::size_t>(output.size())};
}

std::string AddIptcToXmp(std::string const& packet, std::string const& iptc, bool& isComplete) {
    Exiv2::XmpData values = DecodeXmp(packet);
    Exiv2::IptcData fields;
    isComplete = Exiv2::IptcParser::decode(fields, AsBytes(iptc), SizeOf(iptc)) == 0;
    Exiv2::XmpData converted;
    Exiv2::moveIptcToXmp(fields, converted);
    // What XMP does not know is left; that of the envelope and the version tells of the block alone.
    isComplete = isComplete && std::none_of(fields.begin(), fields.end(), [](Exiv2::Iptcdatum const& field) {
                     return field.record() == Exiv2::IptcDataSets::application2 &&
                            field.tag() != Exiv2::IptcDataSets::RecordVersion;
                 });
    bool isChanged = false;
    for (Exiv2::Xmpdatum const& value : converted) {
        if (values.findKey(Exiv2::XmpKey(value.key())) != values.end()) continue;
        values.add(value);
        isChanged = true;
    }
    return isChanged ? EncodeXmp(values) : packet;
}

std::string AddTitleToXmp(std::string const& packet, std::string const& title) {
    Exiv2::XmpData values = DecodeXmp(packet);
    if (values.findKey(Exiv2::XmpKey("Xmp.dc.title")) != values.end()) return packet;
    values["Xmp.dc.title"] = title;
    return EncodeXmp(values);
}

std::string DropGpsFromXmp(std::string const& packet) { return DropFromXmp(packet, {"gps", "latitude", "longitude"}); }

std::string DropPicturesFromXmp(std::string const& packet) { return DropFromXmp(packet, {"thumbnails", "gimage"}); }

} // namespace Velnor::Proc::Files
