#pragma once

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace Velnor::Tool {

/// A photograph as it was named or found.
struct PhotoName {
    std::string path;
    std::string folder = {}; ///< Where it lies below the folder that was given; empty in that itself, and without one.
    friend bool operator==(PhotoName const&, PhotoName const&) = default;
};

/// The photographs of a call in their order. However many they are, few are in memory: the others wait in a file that
/// has no name.
class PhotoNames {
public:
    void Add(PhotoName const& photo); ///< After those before. Throws Failure (output) when there is no room.
    std::size_t GetCount() const { return count; }

    /// Goes through them from the first to the last, then gives nothing.
    class Reader {
    public:
        explicit Reader(PhotoNames const& photoNames) : names(photoNames) {}
        std::optional<PhotoName> Next();

    private:
        std::string NextText();
        bool FillPiece();

        PhotoNames const& names;
        std::string piece; ///< Of the file.
        std::size_t inPiece = 0;
        std::size_t index = 0;
        std::size_t at = 0;
    };

private:
    static constexpr std::size_t MOST_IN_MEMORY = 4 << 20;

    struct Close {
        void operator()(std::FILE* stream) const { std::fclose(stream); }
    };
    void Spill();

    std::size_t count = 0;
    std::string texts;                       ///< Each ends with a zero. The last of them, once there is a file.
    std::size_t inFile = 0;                  ///< Bytes that stand before them in the file.
    std::unique_ptr<std::FILE, Close> spill; ///< None while all are in memory.
};

} // namespace Velnor::Tool
