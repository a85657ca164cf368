#include "Proc/Host/Files/ExifBlock.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace Velnor::Proc::Files {
namespace {

constexpr std::string_view PREFIX("Exif\0\0", 6);
constexpr std::size_t HEADER_BYTES = 8;
constexpr std::size_t FIRST_LINK = 4;
constexpr std::size_t ENTRY_BYTES = 12;
constexpr std::size_t VALUE_AT = 8; // in an entry

enum Type : unsigned { ASCII = 2, SHORT = 3, LONG = 4, RATIONAL = 5, UNDEFINED = 7 };
constexpr std::array<std::size_t, 13> TYPE_BYTES{0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};

enum Tag : unsigned {
    WIDTH = 0x0100,
    HEIGHT = 0x0101,
    STRIP_OFFSETS = 0x0111,
    ORIENTATION = 0x0112,
    STRIP_BYTES = 0x0117,
    X_RESOLUTION = 0x011A,
    Y_RESOLUTION = 0x011B,
    RESOLUTION_UNIT = 0x0128,
    THUMBNAIL = 0x0201,
    THUMBNAIL_BYTES = 0x0202,
    EXIF_DIRECTORY = 0x8769,
    GPS_DIRECTORY = 0x8825,
    USER_COMMENT = 0x9286,
    COLOR_SPACE = 0xA001,
    PIXEL_X_DIMENSION = 0xA002,
    PIXEL_Y_DIMENSION = 0xA003,
    INTEROPERABILITY_DIRECTORY = 0xA005,
    INTEROPERABILITY_INDEX = 0x0001, // in that directory
};

constexpr unsigned UNIT_INCH = 2;
constexpr unsigned UNIT_CENTIMETRE = 3;
constexpr double MM_PER_INCH = 25.4;
constexpr double MM_PER_CENTIMETRE = 10;

} // namespace

ExifBlock::ExifBlock(std::string block) : bytes(std::move(block)) {
    if (bytes.starts_with(PREFIX)) bytes.erase(0, PREFIX.size());
    if (bytes.empty()) bytes = std::string("II*\0\x08\0\0\0\0\0\0\0\0\0", HEADER_BYTES + 6);
    isLittleEndian = bytes.starts_with("II");
    if (!isLittleEndian && !bytes.starts_with("MM")) throw std::out_of_range("no byte order");
    if (GetFirstDirectory() < HEADER_BYTES) throw std::out_of_range("no first directory");
    std::size_t const link = GetNextLink(GetFirstDirectory());
    if (link == bytes.size()) bytes.append(4, '\0'); // Some writers leave out that there is no next directory.
    Get(link, 4);
}

std::uint32_t ExifBlock::Get(std::size_t at, std::size_t size) const {
    if (at + size > bytes.size()) throw std::out_of_range("place " + std::to_string(at));
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i)
        value = value << 8 | static_cast<unsigned char>(bytes[at + (isLittleEndian ? size - 1 - i : i)]);
    return value;
}

std::string ExifBlock::Encode(std::uint32_t value, std::size_t size) const {
    std::string field(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        field[isLittleEndian ? i : size - 1 - i] = static_cast<char>(value >> (8 * i));
    return field;
}

void ExifBlock::Put(std::size_t at, std::size_t size, std::uint32_t value) {
    if (at + size > bytes.size()) throw std::out_of_range("place " + std::to_string(at));
    bytes.replace(at, size, Encode(value, size));
}

std::size_t ExifBlock::GetNextLink(std::size_t directory) const {
    return directory + 2 + ENTRY_BYTES * Get(directory, 2);
}

std::size_t ExifBlock::Find(std::size_t directory, unsigned tag) const {
    std::size_t const end = directory == 0 ? 0 : GetNextLink(directory);
    for (std::size_t at = directory + 2; at + ENTRY_BYTES <= end; at += ENTRY_BYTES)
        if (Get(at, 2) == tag) return at;
    return 0;
}

std::size_t ExifBlock::GetDirectory(unsigned tag) const {
    std::size_t const entry = Find(GetFirstDirectory(), tag);
    return entry == 0 ? 0 : Get(entry + VALUE_AT, 4);
}

void ExifBlock::SetNumber(std::size_t directory, unsigned tag, std::uint32_t number) {
    std::size_t const entry = Find(directory, tag);
    if (entry == 0) return;
    bool const isShort = number <= UINT16_MAX && Get(entry + 2, 2) == SHORT;
    Put(entry + 2, 2, isShort ? SHORT : LONG);
    Put(entry + 4, 4, 1);
    Put(entry + VALUE_AT, 4, 0);
    Put(entry + VALUE_AT, isShort ? 2 : 4, number);
}

std::optional<double> ExifBlock::GetRational(std::size_t directory, unsigned tag) const {
    std::size_t const entry = Find(directory, tag);
    if (entry == 0 || Get(entry + 2, 2) != RATIONAL) return {};
    std::size_t const at = Get(entry + VALUE_AT, 4);
    double const value = static_cast<double>(Get(at, 4)) / Get(at + 4, 4);
    return std::isfinite(value) && value > 0 ? std::optional(value) : std::nullopt;
}

void ExifBlock::SetUpright(std::uint32_t width, std::uint32_t height) {
    SetNumber(GetFirstDirectory(), ORIENTATION, 1);
    SetNumber(GetFirstDirectory(), WIDTH, width);
    SetNumber(GetFirstDirectory(), HEIGHT, height);
    SetNumber(GetDirectory(EXIF_DIRECTORY), PIXEL_X_DIMENSION, width);
    SetNumber(GetDirectory(EXIF_DIRECTORY), PIXEL_Y_DIMENSION, height);
}

void ExifBlock::SetSrgb() {
    constexpr std::string_view BASIC_FILE("R98\0", 4); // Others are of files in the colours of Adobe RGB.
    std::size_t const exif = GetDirectory(EXIF_DIRECTORY);
    SetNumber(exif, COLOR_SPACE, 1);
    std::size_t const pointer = Find(exif, INTEROPERABILITY_DIRECTORY);
    std::size_t const index = pointer == 0 ? 0 : Find(Get(pointer + VALUE_AT, 4), INTEROPERABILITY_INDEX);
    if (index != 0 && Get(index + 4, 4) == BASIC_FILE.size()) bytes.replace(index + VALUE_AT, 4, BASIC_FILE);
}

int ExifBlock::GetOrientation() const {
    std::size_t const entry = Find(GetFirstDirectory(), ORIENTATION);
    std::uint32_t const value = entry == 0 || Get(entry + 2, 2) != SHORT ? 1 : Get(entry + VALUE_AT, 2);
    return value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
}

/// Of files in files, such as a preview with a thumbnail, the outer one counts.
void ExifBlock::WipePreviews() {
    constexpr std::string_view BEGIN = "\xff\xd8\xff";
    constexpr std::string_view END = "\xff\xd9";
    std::size_t begin = 0;
    int depth = 0;
    for (std::size_t at = bytes.find('\xff'); at != std::string::npos; at = bytes.find('\xff', at + 1)) {
        bool const isBegin = bytes.compare(at, BEGIN.size(), BEGIN) == 0;
        bool const isEnd = depth > 0 && bytes.compare(at, END.size(), END) == 0;
        if (isBegin && depth++ == 0) begin = at;
        if (isEnd && --depth == 0) Wipe(begin, at + END.size() - begin);
    }
}

/// Overwrites with zeros; at the block's end takes the bytes out.
void ExifBlock::Wipe(std::size_t at, std::size_t size) {
    // A damaged place must not cost the first directory.
    if (at < GetNextLink(GetFirstDirectory()) + 4 && at + size > GetFirstDirectory()) return;
    if (at < HEADER_BYTES || at + size > bytes.size()) return;
    if (at + size == bytes.size())
        bytes.resize(at);
    else
        bytes.replace(at, size, size, '\0');
}

void ExifBlock::WipeValue(std::size_t entry) {
    unsigned const type = Get(entry + 2, 2);
    std::size_t const size = type < TYPE_BYTES.size() ? TYPE_BYTES.at(type) * Get(entry + 4, 4) : 0;
    if (size > 4) Wipe(Get(entry + VALUE_AT, 4), size);
}

void ExifBlock::WipeDirectory(std::size_t directory) {
    std::size_t const end = GetNextLink(directory);
    for (std::size_t at = directory + 2; at < end; at += ENTRY_BYTES) WipeValue(at);
    Wipe(directory, end + 4 - directory);
}

void ExifBlock::DropThumbnail() {
    std::size_t const link = GetNextLink(GetFirstDirectory());
    std::size_t const directory = Get(link, 4);
    Put(link, 4, 0);
    if (directory == 0 || directory + 2 > bytes.size()) return;
    for (auto const& [place, size] : {std::pair{THUMBNAIL, THUMBNAIL_BYTES}, {STRIP_OFFSETS, STRIP_BYTES}}) {
        std::size_t const placeEntry = Find(directory, place);
        std::size_t const sizeEntry = Find(directory, size);
        if (placeEntry == 0 || sizeEntry == 0) continue;
        Wipe(Get(placeEntry + VALUE_AT, 4), Get(sizeEntry + VALUE_AT, Get(sizeEntry + 2, 2) == SHORT ? 2 : 4));
    }
    WipeDirectory(directory);
}

void ExifBlock::DropGps() {
    std::size_t const directory = GetDirectory(GPS_DIRECTORY);
    if (directory == 0) return;
    WipeDirectory(directory);
    Remove(GetFirstDirectory(), GPS_DIRECTORY);
}

void ExifBlock::Remove(std::size_t directory, unsigned tag) {
    std::size_t const entry = Find(directory, tag);
    if (entry == 0) return;
    std::size_t const end = GetNextLink(directory) + 4;
    Put(directory, 2, Get(directory, 2) - 1);
    bytes.erase(entry, ENTRY_BYTES).insert(end - ENTRY_BYTES, ENTRY_BYTES, '\0');
}

std::optional<ExifBlock::Resolution> ExifBlock::GetResolution() const {
    std::size_t const first = GetFirstDirectory();
    auto const x = GetRational(first, X_RESOLUTION);
    auto const y = GetRational(first, Y_RESOLUTION);
    std::size_t const unitEntry = Find(first, RESOLUTION_UNIT);
    unsigned const unit = unitEntry == 0 ? UNIT_INCH : Get(unitEntry + VALUE_AT, 2);
    if (!x || !y || (unit != UNIT_INCH && unit != UNIT_CENTIMETRE)) return {};
    double const mm = unit == UNIT_INCH ? MM_PER_INCH : MM_PER_CENTIMETRE;
    return Resolution{*x / mm, *y / mm};
}

void ExifBlock::AddResolution(Resolution const& resolution) {
    if (Find(GetFirstDirectory(), X_RESOLUTION) != 0) return;
    constexpr std::uint32_t DENOMINATOR = 100;
    auto const encode = [this](double perMm) {
        return Encode(static_cast<std::uint32_t>(std::lround(perMm * MM_PER_INCH * DENOMINATOR)), 4) +
               Encode(DENOMINATOR, 4);
    };
    Add(FIRST_LINK, {MakeEntry(X_RESOLUTION, RATIONAL, 1, encode(resolution.x)),
                     MakeEntry(Y_RESOLUTION, RATIONAL, 1, encode(resolution.y)),
                     MakeEntry(RESOLUTION_UNIT, SHORT, 1, Encode(UNIT_INCH, 2))});
}

bool ExifBlock::AddText(unsigned tag, std::string_view text) {
    if (Find(GetFirstDirectory(), tag) != 0) return false;
    std::string const value = std::string(text) + '\0';
    Add(FIRST_LINK, {MakeEntry(tag, ASCII, static_cast<std::uint32_t>(value.size()), value)});
    return true;
}

bool ExifBlock::AddUserComment(std::string_view text) {
    if (Find(GetDirectory(EXIF_DIRECTORY), USER_COMMENT) != 0) return false;
    if (GetDirectory(EXIF_DIRECTORY) == 0) {
        bytes.resize(bytes.size() + bytes.size() % 2);
        std::string const place = Encode(static_cast<std::uint32_t>(bytes.size()), 4);
        bytes.append(2 + 4, '\0'); // A directory without entries.
        Add(FIRST_LINK, {MakeEntry(EXIF_DIRECTORY, LONG, 1, place)});
    }
    bool const isAscii = std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    std::string const value = (isAscii ? std::string("ASCII\0\0\0", 8) : std::string(8, '\0')) + std::string(text);
    Entry const entry = MakeEntry(USER_COMMENT, UNDEFINED, static_cast<std::uint32_t>(value.size()), value);
    Add(Find(GetFirstDirectory(), EXIF_DIRECTORY) + VALUE_AT, {entry});
    return true;
}

void ExifBlock::AddBlock(unsigned tag, std::string const& block) {
    Add(FIRST_LINK, {MakeEntry(tag, UNDEFINED, static_cast<std::uint32_t>(block.size()), block)});
}

/// A value of more than four bytes goes to the block's end.
ExifBlock::Entry ExifBlock::MakeEntry(unsigned tag, unsigned type, std::uint32_t count, std::string value) {
    value.resize(std::max<std::size_t>(value.size() + value.size() % 2, 4));
    if (value.size() == 4) return {tag, type, count, value};
    bytes.resize(bytes.size() + bytes.size() % 2);
    std::string const place = Encode(static_cast<std::uint32_t>(bytes.size()), 4);
    bytes += value;
    return {tag, type, count, place};
}

/// Writes the directory that a link points to anew at the block's end, with more entries. The old one is left: it is
/// nothing but numbers.
void ExifBlock::Add(std::size_t link, std::vector<Entry> const& entries) {
    std::size_t const directory = Get(link, 4);
    std::vector<std::pair<unsigned, std::string>> all;
    std::size_t const end = GetNextLink(directory);
    for (std::size_t at = directory + 2; at < end; at += ENTRY_BYTES)
        all.emplace_back(Get(at, 2), bytes.substr(at, ENTRY_BYTES));
    for (Entry const& entry : entries)
        all.emplace_back(entry.tag,
                         Encode(entry.tag, 2) + Encode(entry.type, 2) + Encode(entry.count, 4) + entry.value);
    std::ranges::stable_sort(all, {}, &std::pair<unsigned, std::string>::first);
    std::string const next = bytes.substr(end, 4);
    bytes.resize(bytes.size() + bytes.size() % 2);
    Put(link, 4, static_cast<std::uint32_t>(bytes.size()));
    bytes += Encode(static_cast<std::uint32_t>(all.size()), 2);
    for (auto const& [tag, entry] : all) bytes += entry;
    bytes += next;
}

} // namespace Velnor::Proc::Files
