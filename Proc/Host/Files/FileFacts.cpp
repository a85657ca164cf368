#include "Proc/Host/Files/FileFacts.h"

#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <new>
#include <string_view>
#include <vector>

namespace Velnor::Proc::Files {
namespace {

/// Bytes at places of a file, whatever its position.
class FileBytes {
public:
    explicit FileBytes(int file) : descriptor(file) {
        struct stat status {};
        if (fstat(file, &status) == 0) size = static_cast<std::uint64_t>(status.st_size);
    }

    std::uint64_t GetSize() const { return size; }
    bool Holds(std::uint64_t at, std::uint64_t bytes) const { return at <= size && bytes <= size - at; }

    /// Empty when the file does not hold them all.
    std::string Read(std::uint64_t at, std::uint64_t bytes) const {
        if (!Holds(at, bytes)) return {};
        std::string read(bytes, '\0');
        std::size_t done = 0;
        while (done < bytes) {
            ssize_t const got = pread(descriptor, read.data() + done, bytes - done, static_cast<off_t>(at + done));
            if (got <= 0) return {};
            done += static_cast<std::size_t>(got);
        }
        return read;
    }

private:
    int const descriptor;
    std::uint64_t size = 0;
};

std::uint64_t ToNumber(std::string_view bytes, bool isLittleEndian = false) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        value = value << 8 | static_cast<unsigned char>(bytes[isLittleEndian ? bytes.size() - 1 - i : i]);
    return value;
}

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
        std::string const head = file.Read(0, 16);
        isLittleEndian = head.starts_with("II");
        isBig = head.size() == 16 && Get(std::string_view(head).substr(2, 2)) == 43;
        if (!head.empty()) first = Get(std::string_view(head).substr(isBig ? 8 : 4, isBig ? 8 : 4));
    }

    void Run() { TakeDirectory(first, 0); }

private:
    enum Tag : std::uint16_t {
        BITS_PER_SAMPLE = 258,
        SAMPLES_PER_PIXEL = 277,
        ROWS_PER_STRIP = 278,
        TILE_LENGTH = 323,
        EXIF = 34665,
        GPS = 34853,
    };

    std::uint64_t Get(std::string_view bytes) const { return ToNumber(bytes, isLittleEndian); }

    void TakeDirectory(std::uint64_t at, int depth) {
        constexpr std::uint64_t MOST_ENTRIES = 65535;
        std::uint64_t const countBytes = isBig ? 8 : 2;
        std::uint64_t const entryBytes = isBig ? 20 : 12;
        std::string const head = file.Read(at, countBytes);
        std::uint64_t const count = std::min(MOST_ENTRIES, Get(head));
        std::string const entries = file.Read(at + countBytes, count * entryBytes);
        if (entries.empty()) AddDamage(facts, "it ends before a directory of its tags");
        for (std::size_t i = 0; i < entries.size(); i += entryBytes)
            TakeEntry(std::string_view(entries).substr(i, entryBytes), depth);
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
        if (depth > 0) return;
        if (tag == BITS_PER_SAMPLE) sampleBits = static_cast<unsigned>(value);
        if (tag == SAMPLES_PER_PIXEL) samples = static_cast<unsigned>(value);
        if (tag == ROWS_PER_STRIP || tag == TILE_LENGTH) facts.rowsAtOnce = value;
        if (tag == EXIF || tag == GPS) TakeDirectory(value, depth + 1);
    }

    FileBytes const& file;
    FileFacts& facts;
    bool isLittleEndian = false;
    bool isBig = false;
    std::uint64_t first = 0;
    unsigned sampleBits = 1;
    unsigned samples = 1;
};

} // namespace

FileFacts ReadFileFacts(int descriptor, ReadKind kind) {
    FileBytes const file(descriptor);
    FileFacts facts;
    facts.fileBytes = file.GetSize();
    if (kind == ReadKind::Png) PngWalk(file, facts).Run();
    if (kind == ReadKind::Tiff) TiffWalk(file, facts).Run();
    return facts;
}

} // namespace Velnor::Proc::Files
