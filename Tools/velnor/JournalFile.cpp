#include "Tools/velnor/JournalFile.h"

#include "Tools/velnor/Failure.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace Velnor::Tool {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t PIECE = 64 << 10;
constexpr std::string_view HEAD = "{\"input\":\""; // What each line begins with.

} // namespace

JournalFile::JournalFile(fs::path const& file, Use use, GetKey const& getKey)
    : path(file), isWritable(use == Use::Write) {
    try {
        Open();
        if (descriptor >= 0) Load(getKey);
    } catch (...) {
        if (descriptor >= 0) close(descriptor);
        throw;
    }
}

void JournalFile::Open() {
    if (!isWritable) {
        descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        return;
    }
    std::error_code error;
    if (path.has_parent_path()) fs::create_directories(path.parent_path(), error);
    descriptor = open(path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (descriptor < 0) Fail(std::strerror(errno));
    if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) return;
    Fail(errno == EWOULDBLOCK ? "another velnor is at work with it" : std::strerror(errno));
}

JournalFile::~JournalFile() {
    if (descriptor >= 0) close(descriptor);
}

void JournalFile::Fail(std::string const& reason) const {
    throw Failure(ExitCode::OutputFailed, "journal " + path.string() + " cannot be used: " + reason);
}

/// Without its end; what there is where the end is missing.
std::string JournalFile::ReadLine(std::uint64_t at) const {
    std::string line;
    for (;;) {
        std::array<char, 4096> piece{};
        ssize_t const got = pread(descriptor, piece.data(), piece.size(), static_cast<off_t>(at + line.size()));
        if (got <= 0) return line;
        std::string_view const text(piece.data(), static_cast<std::size_t>(got));
        line += text.substr(0, text.find('\n'));
        if (text.find('\n') != std::string_view::npos) return line;
    }
}

/// Adds a piece of the file behind the text, which begins at that place; false at the end.
bool JournalFile::ReadMore(std::string& text, std::uint64_t at) const {
    std::array<char, PIECE> piece{};
    ssize_t const got = pread(descriptor, piece.data(), piece.size(), static_cast<off_t>(at + text.size()));
    if (got < 0) Fail(std::strerror(errno));
    text.append(piece.data(), static_cast<std::size_t>(got));
    return got > 0;
}

void JournalFile::TakeLine(std::string_view text, std::uint64_t at, GetKey const& getKey) {
    Json const line = Json::parse(text, nullptr, false);
    if (!line.is_object()) {
        if (at == 0) Fail("it is no journal");
        return;
    }
    if (std::optional<std::uint64_t> const key = getKey(line)) places.push_back({*key, at});
}

void JournalFile::Load(GetKey const& getKey) {
    std::string text;
    std::uint64_t at = 0; // Of the text in the file.
    while (ReadMore(text, at)) {
        std::size_t begin = 0;
        for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', begin)) {
            TakeLine(std::string_view(text).substr(begin, end - begin), at + begin, getKey);
            begin = end + 1;
        }
        text.erase(0, begin);
        at += begin;
        if (at == 0 && text.size() > PIECE) break;
    }
    if (at == 0 && text.substr(0, HEAD.size()) != HEAD.substr(0, text.size())) Fail("it is no journal");
    if (!text.empty()) DropTornLine(at);
    std::ranges::sort(places);
}

void JournalFile::DropTornLine(std::uint64_t end) {
    if (isWritable && ftruncate(descriptor, static_cast<off_t>(end)) != 0) Fail(std::strerror(errno));
}

std::optional<Json> JournalFile::Find(std::uint64_t key) const {
    auto const found = std::ranges::upper_bound(places, key, {}, &Place::key);
    if (found == places.begin() || (found - 1)->key != key) return std::nullopt;
    Json line = Json::parse(ReadLine((found - 1)->at), nullptr, false);
    return line.is_object() ? std::optional(std::move(line)) : std::nullopt;
}

void JournalFile::Append(Json const& line) {
    std::string const text = WriteLine(line);
    std::lock_guard const lock(mutex);
    ssize_t const written = write(descriptor, text.data(), text.size());
    if (written < 0) Fail(std::strerror(errno));
    if (static_cast<std::size_t>(written) != text.size()) Fail("there is no space left");
}

void JournalFile::Clear() {
    places.clear();
    if (ftruncate(descriptor, 0) != 0) Fail(std::strerror(errno));
}

} // namespace Velnor::Tool
