#include "Proc/Host/Files/HeifBoxes.h"

#include "Proc/Host/Files/IsoBoxes.h"

#include <string_view>

namespace Velnor::Proc::Files {
namespace {

/// Numbers of a box's content, one after the other.
class BoxReader {
public:
    explicit BoxReader(std::string_view content) : rest(content) {}

    /// 0 where the content ends before.
    std::uint64_t Take(std::size_t bytes) {
        isWhole = isWhole && bytes <= rest.size();
        if (!isWhole) return 0;
        std::uint64_t const value = ToNumber(rest.substr(0, bytes));
        rest.remove_prefix(bytes);
        return value;
    }
    bool IsWhole() const { return isWhole; }

private:
    std::string_view rest;
    bool isWhole = true;
};

/// The box that says where items are (ISO/IEC 14496-12, 8.11.3).
class ItemPlaces {
public:
    ItemPlaces(FileBytes const& heif, std::string_view content) : file(heif), reader(content) {}

    std::string FindDamage() {
        std::uint64_t const version = reader.Take(1);
        reader.Take(3);
        std::uint64_t const sizes = reader.Take(2);
        offsetBytes = sizes >> 12;
        lengthBytes = sizes >> 8 & 15;
        baseBytes = sizes >> 4 & 15;
        indexBytes = version > 0 ? sizes & 15 : 0;
        std::uint64_t const items = reader.Take(version < 2 ? 2 : 4);
        for (std::uint64_t i = 0; i < items && reader.IsWhole(); ++i) TakeItem(version);
        return reader.IsWhole() ? damage : "its list of items is cut short";
    }

private:
    void TakeItem(std::uint64_t version) {
        std::uint64_t const item = reader.Take(version < 2 ? 2 : 4);
        std::uint64_t const method = version > 0 ? reader.Take(2) & 15 : 0;
        std::uint64_t const otherFile = reader.Take(2);
        std::uint64_t const base = reader.Take(baseBytes);
        std::uint64_t const extents = reader.Take(2);
        bool const isInFile = method == 0 && otherFile == 0;
        for (std::uint64_t i = 0; i < extents && reader.IsWhole(); ++i) {
            reader.Take(indexBytes);
            std::uint64_t const at = base + reader.Take(offsetBytes);
            bool const isThere = file.Holds(at, reader.Take(lengthBytes));
            if (isInFile && !isThere) damage = "its item " + std::to_string(item) + " lies beyond its end";
        }
    }

    FileBytes const& file;
    BoxReader reader;
    std::size_t offsetBytes = 0, lengthBytes = 0, baseBytes = 0, indexBytes = 0;
    std::string damage;
};

/// The box of all that describes the pictures: version and flags, then boxes.
std::string FindDamageIn(FileBytes const& file, IsoBox const& meta) {
    constexpr std::uint64_t MOST_PLACES = 16 << 20;
    for (std::uint64_t at = meta.content + 4; at < meta.end;) {
        IsoBox const box = ReadIsoBox(file, at, meta.end);
        if (box.type.empty()) return "a box of its metadata is cut short";
        if (box.type == "iloc" && box.end - box.content <= MOST_PLACES)
            return ItemPlaces(file, file.Read(box.content, box.end - box.content)).FindDamage();
        at = box.end;
    }
    return {};
}

} // namespace

std::string FindHeifDamage(FileBytes const& file) {
    for (std::uint64_t at = 0; at < file.GetSize();) {
        IsoBox const box = ReadIsoBox(file, at, file.GetSize());
        if (box.type.empty()) return DescribeBrokenBox(file, at);
        if (box.type == "meta")
            if (std::string damage = FindDamageIn(file, box); !damage.empty()) return damage;
        at = box.end;
    }
    return {};
}

} // namespace Velnor::Proc::Files
