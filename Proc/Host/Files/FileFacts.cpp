#include "Proc/Host/Files/FileFacts.h"

#include "Proc/Host/Files/FileBytes.h"
#include "Proc/Host/Files/HeifBoxes.h"
#include "Proc/Host/Files/PnmFile.h"
#include "Proc/Host/Files/WebPFile.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <new>
#include <optional>
#include <string_view>

namespace Velnor::Proc::Files {
namespace {

/// What comes of unpacking something.
struct Unpacked {
    std::uint64_t bytes = 0; ///< Counted to a little over what was allowed.
    bool isDamaged = false;
};

/// Unpacks zlib's format and throws the result away.
Unpacked Unpack(std::string_view packed, std::uint64_t allowed) {
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK) throw std::bad_alloc();
    std::array<Bytef, 1 << 15> part;
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    stream.avail_in = static_cast<uInt>(packed.size());
    Unpacked unpacked;
    int result = Z_OK;
    while (result == Z_OK && unpacked.bytes <= allowed) {
        stream.next_out = part.data();
        stream.avail_out = static_cast<uInt>(part.size());
        result = inflate(&stream, Z_NO_FLUSH);
        unpacked.bytes += part.size() - stream.avail_out;
    }
    inflateEnd(&stream);
    unpacked.isDamaged = result != Z_OK && result != Z_STREAM_END;
    return unpacked;
}

/// The packed part of a chunk, empty when there is none: after a name (zTXt, iCCP) and the method of packing, in iTXt
/// after a flag that says whether it is packed, and two more texts.
std::string_view FindPacked(std::string_view type, std::string_view data) {
    auto const skipText = [&data] { data.remove_prefix(std::min(data.find('\0'), data.size() - 1) + 1); };
    bool const isText = type == "iTXt";
    if ((!isText && type != "zTXt" && type != "iCCP") || data.empty()) return {};
    skipText();
    if (data.size() < 2 || (isText && data[0] == 0)) return {};
    data.remove_prefix(isText ? 2 : 1);
    for (int texts = isText ? 2 : 0; texts > 0 && !data.empty(); --texts) skipText();
    return data;
}

/// The first is what is told.
void AddDamage(FileFacts& facts, std::string const& damage) {
    if (facts.damage.empty()) facts.damage = damage;
}

class PngWalk {
public:
    PngWalk(FileBytes const& png, FileFacts& found) : file(png), facts(found) {}

    void Run() {
        std::uint64_t at = SIGNATURE_BYTES;
        while (!isAtEnd && facts.metadataBytes <= FileFacts::MAX_METADATA_BYTES) at = TakeChunk(at);
    }

private:
    static constexpr std::uint64_t SIGNATURE_BYTES = 8;
    static constexpr std::uint64_t FRAME_BYTES = 12; ///< Length, type and checksum.

    /// Returns where the next one begins.
    std::uint64_t TakeChunk(std::uint64_t at) {
        std::string const head = file.Read(at, 8);
        std::uint64_t const length = head.empty() ? 0 : ToNumber(std::string_view(head).substr(0, 4));
        std::string const type = head.empty() ? "" : head.substr(4);
        bool const isWhole = file.Holds(at, FRAME_BYTES + length);
        bool const isPixels = type == "IDAT"; // The decoder checks them itself, and says where they end.
        isAtEnd = type == "IEND" || !isWhole;
        if (!isWhole && !isPixels) AddDamage(facts, "it ends before its last chunk");
        if (isWhole && !isPixels) TakeContent(type, file.Read(at + 4, length + 8));
        return at + FRAME_BYTES + length;
    }

    /// @param content  type, data and checksum
    void TakeContent(std::string const& type, std::string const& content) {
        std::string_view const checked = std::string_view(content).substr(0, content.size() - 4);
        uLong const sum = crc32(0, reinterpret_cast<Bytef const*>(checked.data()), static_cast<uInt>(checked.size()));
        if (sum != ToNumber(std::string_view(content).substr(content.size() - 4)))
            AddDamage(facts, "its chunk " + type + " has a wrong checksum");
        std::string_view const data = checked.substr(4);
        if (type == "IHDR" && data.size() == 13) TakeHeader(data);
        std::string_view const packed = FindPacked(type, data);
        if (packed.empty()) return;
        Unpacked const unpacked = Unpack(packed, FileFacts::MAX_METADATA_BYTES - facts.metadataBytes);
        if (unpacked.isDamaged) AddDamage(facts, "its chunk " + type + " cannot be unpacked");
        facts.metadataBytes += unpacked.bytes;
    }

    void TakeHeader(std::string_view header) {
        constexpr std::array<unsigned, 7> CHANNELS{1, 0, 3, 1, 2, 0, 4};
        auto const kind = static_cast<unsigned char>(header[9]);
        facts.pixelBits = kind < CHANNELS.size() ? CHANNELS[kind] * static_cast<unsigned char>(header[8]) : 0;
    }

    FileBytes const& file;
    FileFacts& facts;
    bool isAtEnd = false;
};

class TiffWalk {
public:
    TiffWalk(FileBytes const& tiff, FileFacts& found) : file(tiff), facts(found) {
        constexpr std::uint64_t SHORT_HEAD = 8;
        constexpr std::uint64_t LONG_HEAD = 16;
        std::string const head = file.Read(0, std::clamp(file.GetSize(), SHORT_HEAD, LONG_HEAD));
        isLittleEndian = head.starts_with("II");
        hasOrder = isLittleEndian || head.starts_with("MM");
        isBig = head.size() == LONG_HEAD && Get(std::string_view(head).substr(2, 2)) == 43;
        if (!head.empty()) first = Get(std::string_view(head).substr(isBig ? 8 : 4, isBig ? 8 : 4));
    }

    void Run() {
        if (!hasOrder) return AddDamage(facts, "it does not begin with a byte order");
        TakeDirectory(first, 0);
    }

    /// Of files, where a block of EXIF may leave out that there is no further one.
    void RequireFurtherDirectories() {
        constexpr int MOST_PAGES = 1000; // Links may run in a circle.
        std::uint64_t at = first;
        for (int page = 0; page < MOST_PAGES && at != 0; ++page) {
            std::string const head = file.Read(at, GetCountBytes());
            std::string const link = file.Read(at + GetCountBytes() + Get(head) * GetEntryBytes(), isBig ? 8 : 4);
            if (head.empty() || link.empty()) return AddDamage(facts, "it ends before a directory of its tags");
            if (page > 0) TakeDirectory(at, 1);
            at = Get(link);
        }
    }

private:
    enum Tag : std::uint16_t {
        BITS_PER_SAMPLE = 258,
        SAMPLES_PER_PIXEL = 277,
        ROWS_PER_STRIP = 278,
        TILE_LENGTH = 323,
        EXIF = 34665,
        GPS = 34853,
        INTEROPERABILITY = 40965,
    };

    std::uint64_t Get(std::string_view bytes) const { return ToNumber(bytes, isLittleEndian); }
    std::uint64_t GetCountBytes() const { return isBig ? 8 : 2; }
    std::uint64_t GetEntryBytes() const { return isBig ? 20 : 12; }

    void TakeDirectory(std::uint64_t at, int depth) {
        constexpr std::uint64_t MOST_ENTRIES = 65535;
        std::string const head = file.Read(at, GetCountBytes());
        std::uint64_t const count = std::min(MOST_ENTRIES, Get(head));
        std::string const entries = file.Read(at + GetCountBytes(), count * GetEntryBytes());
        bool const isEmpty = !head.empty() && count == 0;
        if (entries.empty() && !isEmpty) AddDamage(facts, "it ends before a directory of its tags");
        for (std::size_t i = 0; i < entries.size(); i += GetEntryBytes())
            TakeEntry(std::string_view(entries).substr(i, GetEntryBytes()), depth);
        if (depth == 0) facts.pixelBits = sampleBits * samples;
    }

    void TakeEntry(std::string_view entry, int depth) {
        constexpr std::array<std::uint64_t, 19> TYPE_BYTES{0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};
        auto const tag = static_cast<std::uint16_t>(Get(entry.substr(0, 2)));
        std::uint64_t const type = Get(entry.substr(2, 2));
        std::uint64_t const count = Get(entry.substr(4, isBig ? 8 : 4));
        std::string_view const field = entry.substr(isBig ? 12 : 8);
        std::uint64_t const each = type < TYPE_BYTES.size() ? TYPE_BYTES[type] : 0;
        bool const isInField = each == 0 || count <= field.size() / each;
        bool const isInFile = isInField || (count <= file.GetSize() && file.Holds(Get(field), each * count));
        if (!isInFile) AddDamage(facts, "its tag " + std::to_string(tag) + " lies beyond its end");
        if (!isInFile || each == 0 || count == 0) return;
        std::string const away = isInField ? "" : file.Read(Get(field), each);
        TakeValue(tag, Get(isInField ? field.substr(0, each) : std::string_view(away)), depth);
    }

    /// @param value  the first of the tag's values
    void TakeValue(std::uint16_t tag, std::uint64_t value, int depth) {
        if (depth == 1 && tag == INTEROPERABILITY && value != 0) TakeDirectory(value, depth + 1);
        if (depth > 0) return;
        if (tag == BITS_PER_SAMPLE) sampleBits = static_cast<unsigned>(value);
        if (tag == SAMPLES_PER_PIXEL) samples = static_cast<unsigned>(value);
        if (tag == ROWS_PER_STRIP || tag == TILE_LENGTH) facts.rowsAtOnce = value;
        constexpr std::array<std::uint16_t, 9> UNREAD{270, 271, 272, 306, 315, 33432, 33723, EXIF, GPS};
        if (isBig && std::ranges::count(UNREAD, tag) > 0) facts.hasUnreadTags = true;
        if ((tag == EXIF || tag == GPS) && value != 0) TakeDirectory(value, depth + 1);
    }

    FileBytes const& file;
    FileFacts& facts;
    bool isLittleEndian = false;
    bool hasOrder = false;
    bool isBig = false;
    std::uint64_t first = 0;
    unsigned sampleBits = 1;
    unsigned samples = 1;
};

void AddPnmFacts(FileBytes const& file, FileFacts& facts) {
    std::optional<PnmExtent> const extent = MeasurePnm(file);
    if (!extent || extent->wholeRows == extent->height) return;
    facts.wholeRows = extent->wholeRows;
    facts.missingBytes = extent->missingBytes;
    AddDamage(facts,
              "it ends after row " + std::to_string(extent->wholeRows) + " of " + std::to_string(extent->height));
}

} // namespace

FileFacts ReadFileFacts(int descriptor, ReadKind kind) {
    FileBytes const file(descriptor);
    FileFacts facts;
    facts.fileBytes = file.GetSize();
    if (kind == ReadKind::Png) PngWalk(file, facts).Run();
    if (kind == ReadKind::Tiff) {
        TiffWalk walk(file, facts);
        walk.Run();
        walk.RequireFurtherDirectories();
    }
    if (kind == ReadKind::WebP) AddDamage(facts, ReadWebPChunks(file).damage);
    if (kind == ReadKind::Pnm) AddPnmFacts(file, facts);
    if (kind == ReadKind::Heif) AddDamage(facts, FindHeifDamage(file));
    return facts;
}

std::string FindExifDamage(std::string_view block) {
    constexpr std::string_view PREFIX("Exif\0\0", 6);
    if (block.starts_with(PREFIX)) block.remove_prefix(PREFIX.size());
    if (block.empty()) return {};
    FileFacts facts;
    TiffWalk(FileBytes(block), facts).Run();
    return facts.damage.empty() ? "" : "in its EXIF, " + facts.damage;
}

} // namespace Velnor::Proc::Files
