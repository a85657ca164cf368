#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Velnor::Proc::Files {

/// Bytes at places of a file, whatever its position, or of a block in memory, which outlives this.
class FileBytes {
public:
    explicit FileBytes(int file);
    explicit FileBytes(std::string_view bytes) : block(bytes), size(bytes.size()) {}

    std::uint64_t GetSize() const { return size; }
    bool Holds(std::uint64_t at, std::uint64_t bytes) const { return at <= size && bytes <= size - at; }

    /// Empty when there are not so many.
    std::string Read(std::uint64_t at, std::uint64_t bytes) const;

private:
    int const descriptor = -1;
    std::string_view block; ///< Where there is no file.
    std::uint64_t size = 0;
};

/// The number that up to eight bytes are, the most significant one first unless it is said otherwise.
std::uint64_t ToNumber(std::string_view bytes, bool isLittleEndian = false);

} // namespace Velnor::Proc::Files
