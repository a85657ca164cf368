#include "Tools/velnor/NameList.h"

#include "Tools/velnor/Failure.h"
#include "Tools/velnor/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <string_view>

namespace Velnor::Tool {
namespace {

/// Larger than any name, so that the first piece of a list with zero bytes holds one.
constexpr std::size_t PIECE = 64 << 10;
static_assert(PIECE > PATH_MAX);

std::string Describe(std::string const& list) {
    return list == STANDARD_STREAM ? "the list on standard input" : "list " + list;
}

[[noreturn]] void Fail(std::string const& list, std::string const& reason) {
    throw Failure(ExitCode::InputFailed, Describe(list) + " cannot be read: " + reason);
}

class ListFile {
public:
    explicit ListFile(std::string const& listName)
        : name(listName),
          descriptor(name == STANDARD_STREAM ? STDIN_FILENO : open(name.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (descriptor < 0) Fail(name, std::strerror(errno));
    }
    ~ListFile() {
        if (descriptor != STDIN_FILENO) close(descriptor);
    }
    ListFile(ListFile const&) = delete;
    ListFile& operator=(ListFile const&) = delete;

    /// Adds what comes next; false at the end. A pipe gives little at a time.
    bool Read(std::string& text) const {
        std::array<char, PIECE> piece{};
        ssize_t got = -1;
        do got = read(descriptor, piece.data(), piece.size());
        while (got < 0 && errno == EINTR);
        if (got < 0) Fail(name, std::strerror(errno));
        text.append(piece.data(), static_cast<std::size_t>(got));
        return got > 0;
    }

private:
    std::string const& name;
    int const descriptor;
};

} // namespace

void ForEachName(std::string const& list, std::function<void(std::string const& name)> const& visit) {
    ListFile const file(list);
    std::string text;
    bool isMore = true;
    while (isMore && text.size() < PIECE) isMore = file.Read(text);
    char const end = text.find('\0') == std::string::npos ? '\n' : '\0';
    auto const take = [&](std::string_view name) {
        if (end == '\n' && name.ends_with('\r')) name.remove_suffix(1);
        if (!name.empty()) visit(std::string(name));
    };
    for (;;) {
        std::size_t begin = 0;
        for (std::size_t at = text.find(end); at != std::string::npos; begin = at + 1, at = text.find(end, begin))
            take(std::string_view(text).substr(begin, at - begin));
        text.erase(0, begin);
        if (!isMore) break;
        if (text.size() > PATH_MAX) Fail(list, "it is no list of names: one is longer than a file's can be");
        isMore = file.Read(text);
    }
    take(text);
}

} // namespace Velnor::Tool
