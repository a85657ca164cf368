#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Velnor::Proc::Files {

/// Changes an EXIF block, or a whole TIFF file, where it stands. Whatever is not changed keeps its bytes and its place,
/// so that maker notes, which point to places in the block in ways that only their makers know, stay whole.
/// Format: TIFF 6.0, section 2; tags by EXIF 2.32.
class ExifBlock {
public:
    /// A block, an "Exif\0\0" before it left out; an empty one begins a new block. Throws std::out_of_range when the
    /// first directory cannot be followed.
    explicit ExifBlock(std::string block);

    /// For a picture that stands upright: orientation 1, and the size, in those of its tags that there are.
    void SetUpright(std::uint32_t width, std::uint32_t height);
    /// For a picture that has become sRGB: its colour space, and the kind of its file, in those of the tags that there
    /// are.
    void SetSrgb();
    int GetOrientation() const; ///< 1 to 8, 1 where it is not told.
    void DropThumbnail();       ///< The second directory, and the picture that it points to.
    void DropGps();
    /// Overwrites whole JPEG files that are left in the block with zeros: previews in maker notes, which show the
    /// picture as it was taken.
    void WipePreviews();

    struct Resolution {
        double x, y; ///< Pixels per millimetre.
    };
    std::optional<Resolution> GetResolution() const;
    void AddResolution(Resolution const& resolution);

    static constexpr unsigned DESCRIPTION = 0x010E, ARTIST = 0x013B, COPYRIGHT = 0x8298;
    /// Adds a text to the first directory; false, and nothing changed, when the tag is there already.
    bool AddText(unsigned tag, std::string_view text);
    bool AddUserComment(std::string_view text); ///< The same of the user's comment in the EXIF directory.

    static constexpr unsigned IPTC = 0x83BB, IMAGE_RESOURCES = 0x8649;
    void AddBlock(unsigned tag, std::string const& block); ///< Bytes, to the first directory.

    std::string const& GetBytes() const& { return bytes; }
    std::string GetBytes() && { return std::move(bytes); }

private:
    struct Entry {
        unsigned tag;
        unsigned type;
        std::uint32_t count;
        std::string value; ///< The four bytes of it: the value, or where it is.
    };

    std::uint32_t Get(std::size_t at, std::size_t size) const;
    void Put(std::size_t at, std::size_t size, std::uint32_t value);
    std::string Encode(std::uint32_t value, std::size_t size) const;
    std::size_t GetFirstDirectory() const { return Get(4, 4); }
    std::size_t GetNextLink(std::size_t directory) const;        ///< Where the place of the next directory is stored.
    std::size_t Find(std::size_t directory, unsigned tag) const; ///< Where its entry is, 0 for nowhere.
    std::size_t GetDirectory(unsigned tag) const; ///< The one that an entry of the first points to, 0 for none.
    void SetNumber(std::size_t directory, unsigned tag, std::uint32_t number);
    std::optional<double> GetRational(std::size_t directory, unsigned tag) const;
    void Wipe(std::size_t at, std::size_t size);
    void WipeValue(std::size_t entry);
    void WipeDirectory(std::size_t directory);
    void Remove(std::size_t directory, unsigned tag);
    Entry MakeEntry(unsigned tag, unsigned type, std::uint32_t count, std::string value);
    void Add(std::size_t link, std::vector<Entry> const& entries);

    std::string bytes;
    bool isLittleEndian = true;
};

} // namespace Velnor::Proc::Files
