#pragma once

#include "Tools/velnor/Json.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Velnor::Tool {

/// A file of lines of JSON that only grows. A line that a killed process left torn at the end is dropped. Of each line
/// no more than two numbers are kept in memory. Thread-safe once it is loaded.
class JournalFile {
public:
    enum class Use : std::uint8_t { Write, Read }; ///< Read: nothing is made, changed or locked.

    /// What lines of equal things have in common; none for a line that is not to be found.
    using GetKey = std::function<std::optional<std::uint64_t>(Json const& line)>;

    /// Opens the file, makes it and its folder where they are missing, locks it and reads it. Throws Failure (output)
    /// when that cannot be done, when another process has it, and when it holds something else than such lines.
    JournalFile(std::filesystem::path const& path, Use use, GetKey const& getKey);
    ~JournalFile();
    JournalFile(JournalFile const&) = delete;
    JournalFile& operator=(JournalFile const&) = delete;

    /// The latest line of that key among those that were there.
    std::optional<Json> Find(std::uint64_t key) const;

    void Append(Json const& line); ///< In a single write. Throws Failure (output).
    void Clear();                  ///< Drops all lines.

private:
    struct Place {
        std::uint64_t key = 0;
        std::uint64_t at = 0;
        auto operator<=>(Place const&) const = default;
    };
    [[noreturn]] void Fail(std::string const& reason) const;
    void Open();
    void Load(GetKey const& getKey);
    bool ReadMore(std::string& text, std::uint64_t at) const;
    void TakeLine(std::string_view text, std::uint64_t at, GetKey const& getKey);
    std::string ReadLine(std::uint64_t at) const;
    void DropTornLine(std::uint64_t end);

    std::filesystem::path const path;
    bool const isWritable;
    int descriptor = -1; ///< None where nothing is to be read.
    std::vector<Place> places;
    std::mutex mutex;
};

} // namespace Velnor::Tool
