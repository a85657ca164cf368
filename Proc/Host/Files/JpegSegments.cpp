#include "Proc/Host/Files/JpegSegments.h"

#include "Proc/Host/Files/FileBytes.h"
#include "Proc/Host/Files/XmpPacket.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string_view>

namespace Velnor::Proc::Files {
namespace {

constexpr std::size_t MAX_CONTENT = 65535 - 2;
constexpr std::string_view JFIF_HEAD("JFIF\0", 5);
constexpr std::string_view EXIF_HEAD("Exif\0\0", 6);
constexpr std::string_view XMP_HEAD("http://ns.adobe.com/xap/1.0/\0", 29);
constexpr std::string_view EXTENDED_HEAD("http://ns.adobe.com/xmp/extension/\0", 35);
constexpr std::string_view RESOURCES_HEAD("Photoshop 3.0\0", 14);
constexpr std::string_view PROFILE_HEAD("ICC_PROFILE\0", 12);
constexpr std::size_t IDENTITY_BYTES = 32;

// Units of the density in JFIF.
constexpr char INCH = 1;
constexpr char CENTIMETRE = 2;
constexpr double MM_PER_INCH = 25.4;
constexpr double MM_PER_CENTIMETRE = 10;

enum Marker : unsigned char {
    SOS = 0xDA,
    EOI = 0xD9,
    DQT = 0xDB,
    SOF0 = 0xC0,
    SOF1 = 0xC1,
    SOF2 = 0xC2,
    APP0 = 0xE0,
    APP1 = 0xE1,
    APP2 = 0xE2,
    APP13 = 0xED,
    COM = 0xFE
};

std::string BigEndian(std::size_t value, std::size_t bytes) {
    std::string field(bytes, '\0');
    for (std::size_t i = 0; i < bytes; ++i) field[bytes - 1 - i] = static_cast<char>(value >> (8 * i));
    return field;
}

unsigned char ByteOf(char c) { return static_cast<unsigned char>(c); }

/// The parts of extended XMP by their identity and place; only those that follow each other count.
class ExtendedParts {
public:
    void Add(std::string_view content) {
        constexpr std::size_t HEAD = IDENTITY_BYTES + 8;
        if (content.size() < HEAD) return;
        Whole& whole = parts[std::string(content.substr(0, IDENTITY_BYTES))];
        whole.bytes = ToNumber(content.substr(IDENTITY_BYTES, 4));
        whole.pieces[ToNumber(content.substr(IDENTITY_BYTES + 4, 4))] = content.substr(HEAD);
    }

    /// The packet with the part that it names, as far as that is there; says when it is not.
    std::string Join(std::string const& packet, std::string& damage) const {
        if (!NamesExtendedXmp(packet)) return packet;
        std::string extended;
        std::uint64_t bytes = 1; // Of what is not there at all.
        for (auto const& [identity, whole] : parts) {
            if (packet.find(identity) == std::string::npos) continue;
            bytes = whole.bytes;
            for (auto const& [place, piece] : whole.pieces)
                if (place == extended.size()) extended += piece;
        }
        if (extended.size() < bytes) damage = "its extended XMP misses a part";
        return JoinExtendedXmp(packet, extended);
    }

private:
    struct Whole {
        std::uint64_t bytes = 0;
        std::map<std::size_t, std::string> pieces;
    };
    std::map<std::string, Whole> parts;
};

/// The segments of a profile, each of which has its number and tells how many there are.
class ProfileParts {
public:
    void Add(std::string_view content) {
        if (content.size() < 2) return;
        parts[ByteOf(content[0])] = content.substr(2);
        count = std::max(count, std::size_t{ByteOf(content[1])});
    }

    std::string FindDamage() const {
        std::size_t const first = parts.contains(0) ? 0 : 1; // Some count from there.
        for (std::size_t i = first; i < first + count; ++i)
            if (!parts.contains(i))
                return "its colour profile misses segment " + std::to_string(i) + " of " + std::to_string(count);
        return {};
    }

    /// Empty when one is missing.
    std::string Join() const {
        std::string profile;
        if (FindDamage().empty())
            for (auto const& [number, part] : parts) profile += part;
        return profile;
    }

private:
    std::map<std::size_t, std::string> parts;
    std::size_t count = 0;
};

/// The table of luma at quality 50 (ITU-T T.81, table K.1). Other qualities scale it.
constexpr std::array<int, 64> BASE_TABLE{16, 11, 10, 16, 24,  40,  51,  61,  12, 12, 14, 19, 26,  58,  60,  55,
                                         14, 13, 16, 24, 40,  57,  69,  56,  14, 17, 22, 29, 51,  87,  80,  62,
                                         18, 22, 37, 56, 68,  109, 103, 77,  24, 35, 55, 64, 81,  104, 113, 92,
                                         49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99};

int SumTable(int quality) {
    int const scale = quality < 50 ? 5000 / quality : 200 - 2 * quality;
    int sum = 0;
    for (int const base : BASE_TABLE) sum += std::clamp((base * scale + 50) / 100, 1, 255);
    return sum;
}

int FindQuality(int sum) {
    int best = 1;
    for (int quality = 2; quality <= 100; ++quality)
        if (std::abs(SumTable(quality) - sum) < std::abs(SumTable(best) - sum)) best = quality;
    return best;
}

/// What the quantisation tables and the frame tell of how the file was encoded.
class CodingFinder {
public:
    void TakeTables(std::string_view content) {
        constexpr std::size_t ENTRIES = 64;
        while (content.size() > ENTRIES) {
            bool const isWide = ByteOf(content[0]) >> 4 != 0;
            bool const isLuma = (ByteOf(content[0]) & 15) == 0;
            std::size_t const bytes = isWide ? 2 * ENTRIES : ENTRIES;
            if (content.size() < 1 + bytes) return;
            int sum = 0;
            for (std::size_t i = 0; i < bytes; ++i) sum += ByteOf(content[1 + i]) << (isWide && i % 2 == 0 ? 8 : 0);
            if (isLuma) quality = FindQuality(sum);
            content.remove_prefix(1 + bytes);
        }
    }

    void TakeFrame(std::string_view content) {
        constexpr std::size_t COMPONENTS_AT = 5;
        constexpr std::size_t LUMA_FACTORS_AT = 7;
        constexpr unsigned char TWICE_BOTH = 0x22;
        isChromaHalved = content.size() > LUMA_FACTORS_AT && content[COMPONENTS_AT] == 3 &&
                         ByteOf(content[LUMA_FACTORS_AT]) == TWICE_BOTH;
    }

    std::optional<JpegCoding> Get() const {
        return quality == 0 ? std::nullopt : std::optional(JpegCoding{quality, isChromaHalved});
    }

private:
    int quality = 0;
    bool isChromaHalved = false;
};

/// A density without a unit is the shape of a pixel, no resolution.
void TakeResolution(std::string const& content, MetadataBlocks& blocks) {
    constexpr std::size_t UNIT_AT = 7;
    if (content.size() < UNIT_AT + 5) return;
    unsigned char const unit = ByteOf(content[UNIT_AT]);
    auto const get = [&](std::size_t at) {
        int const density = ByteOf(content[at]) << 8 | ByteOf(content[at + 1]);
        return unit == INCH || unit == CENTIMETRE ? density / (unit == INCH ? MM_PER_INCH : MM_PER_CENTIMETRE) : 0;
    };
    blocks.xResolution = get(UNIT_AT + 1);
    blocks.yResolution = get(UNIT_AT + 3);
}

/// What the segments of a file add up to.
class SegmentSum {
public:
    explicit SegmentSum(MetadataBlocks& found) : blocks(found) {}

    void Take(unsigned char marker, std::string const& content) {
        auto const after = [&](std::string_view head) { return content.substr(head.size()); };
        if (marker == DQT) coding.TakeTables(content);
        if (marker == SOF0 || marker == SOF1 || marker == SOF2) coding.TakeFrame(content);
        if (marker == APP0 && content.starts_with(JFIF_HEAD)) TakeResolution(content, blocks);
        if (marker == COM)
            blocks.comments.push_back(IsUtf16(content) ? content
                                                       : content.substr(0, content.find_last_not_of('\0') + 1));
        if (marker == APP2 && content.starts_with(PROFILE_HEAD)) profile.Add(after(PROFILE_HEAD));
        if (marker == APP13 && content.starts_with(RESOURCES_HEAD)) blocks.resources += after(RESOURCES_HEAD);
        if (marker != APP1) return;
        if (content.starts_with(XMP_HEAD)) blocks.xmp = after(XMP_HEAD);
        if (content.starts_with(EXTENDED_HEAD)) extended.Add(std::string_view(content).substr(EXTENDED_HEAD.size()));
    }

    /// Returns what is wrong.
    std::string Finish() {
        std::string damage = profile.FindDamage();
        blocks.profile = profile.Join();
        blocks.xmp = extended.Join(blocks.xmp, damage);
        blocks.coding = coding.Get();
        return damage;
    }

private:
    MetadataBlocks& blocks;
    ExtendedParts extended;
    ProfileParts profile;
    CodingFinder coding;
};

std::string MakeSegment(unsigned char marker, std::string_view head, std::string_view content) {
    return std::string{'\xff', static_cast<char>(marker)} + BigEndian(2 + head.size() + content.size(), 2) +
           std::string(head) + std::string(content);
}

/// A block as segments of at most so many bytes each; `makeHead(number of the segment, place)` begins each.
template <class MakeHead>
std::string MakeSegments(unsigned char marker, std::string_view block, MakeHead const& makeHead) {
    std::size_t const most = MAX_CONTENT - makeHead(0, 0).size();
    std::string segments;
    for (std::size_t at = 0, i = 0; at < block.size(); at += most, ++i)
        segments += MakeSegment(marker, makeHead(i, at), block.substr(at, most));
    return segments;
}

std::string MakeJfifSegment(double xPerMm, double yPerMm) {
    auto const perInch = [](double perMm) {
        return BigEndian(static_cast<std::size_t>(std::clamp(std::lround(perMm * MM_PER_INCH), 1L, 65535L)), 2);
    };
    bool const isKnown = xPerMm > 0;
    std::string const density = isKnown ? INCH + perInch(xPerMm) + perInch(yPerMm) : std::string("\0\0\1\0\1", 5);
    return MakeSegment(APP0, JFIF_HEAD, "\1\2" + density + std::string(2, '\0'));
}

std::string MakeXmpSegments(std::string const& packet) {
    if (packet.empty()) return {};
    if (XMP_HEAD.size() + packet.size() <= MAX_CONTENT) return MakeSegment(APP1, XMP_HEAD, packet);
    ExtendedXmp const split = SplitExtendedXmp(packet);
    return MakeSegment(APP1, XMP_HEAD, split.packet) +
           MakeSegments(APP1, split.extended, [&](std::size_t, std::size_t place) {
               return std::string(EXTENDED_HEAD) + split.identity + BigEndian(split.extended.size(), 4) +
                      BigEndian(place, 4);
           });
}

std::string MakeProfileSegments(std::string const& profile) {
    std::size_t const most = MAX_CONTENT - PROFILE_HEAD.size() - 2;
    std::size_t const count = (profile.size() + most - 1) / most;
    return MakeSegments(APP2, profile, [&](std::size_t i, std::size_t) {
        return std::string(PROFILE_HEAD) + static_cast<char>(i + 1) + static_cast<char>(count);
    });
}

} // namespace

std::string ReadJpegSegments(int descriptor, MetadataBlocks& blocks) {
    constexpr std::array<unsigned char, 9> WANTED{APP0, APP1, APP2, APP13, COM, DQT, SOF0, SOF1, SOF2};
    FileBytes const file(descriptor);
    blocks.xResolution = blocks.yResolution = 0;
    blocks.resources.clear();
    SegmentSum sum(blocks);
    std::uint64_t at = 2;
    for (std::string head = file.Read(at, 4); !head.empty() && head[0] == '\xff'; head = file.Read(at, 4)) {
        if (head[1] == '\xff') { // Fill bytes may stand before a marker.
            ++at;
            continue;
        }
        unsigned char const marker = ByteOf(head[1]);
        std::uint64_t const length = ToNumber(std::string_view(head).substr(2));
        if (marker == SOS || marker == EOI || length < 2) break;
        if (std::ranges::find(WANTED, marker) != WANTED.end()) sum.Take(marker, file.Read(at + 4, length - 2));
        at += 2 + length;
    }
    return sum.Finish();
}

std::string ReadJpegProfile(int descriptor) {
    MetadataBlocks blocks;
    ReadJpegSegments(descriptor, blocks);
    return blocks.profile;
}

std::string MakeJpegSegments(MetadataBlocks const& blocks) {
    std::string segments = MakeJfifSegment(blocks.xResolution, blocks.yResolution);
    if (!blocks.exif.empty()) segments += MakeSegment(APP1, EXIF_HEAD, blocks.exif);
    segments += MakeXmpSegments(blocks.xmp);
    segments += MakeProfileSegments(blocks.profile);
    segments +=
        MakeSegments(APP13, blocks.resources, [](std::size_t, std::size_t) { return std::string(RESOURCES_HEAD); });
    for (std::string const& comment : blocks.comments) segments += MakeSegment(COM, "", comment.substr(0, MAX_CONTENT));
    return segments;
}

} // namespace Velnor::Proc::Files
