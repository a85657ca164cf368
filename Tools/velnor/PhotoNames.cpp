#include "Tools/velnor/PhotoNames.h"

#include "Tools/velnor/Failure.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace Velnor::Tool {

void PhotoNames::Add(PhotoName const& photo) {
    texts.append(photo.path).push_back('\0');
    texts.append(photo.folder).push_back('\0');
    ++count;
    if (texts.size() >= MOST_IN_MEMORY) Spill();
}

void PhotoNames::Spill() {
    if (!spill) spill.reset(std::tmpfile());
    bool const isWritten = spill && std::fwrite(texts.data(), 1, texts.size(), spill.get()) == texts.size() &&
                           std::fflush(spill.get()) == 0;
    if (!isWritten)
        throw Failure(ExitCode::OutputFailed,
                      "the names of " + std::to_string(count) +
                          " photographs cannot be kept in a temporary file: " + std::strerror(errno));
    inFile += texts.size();
    texts.clear();
}

std::optional<PhotoName> PhotoNames::Reader::Next() {
    if (index == names.count) return std::nullopt;
    ++index;
    PhotoName photo{NextText()};
    photo.folder = NextText();
    return photo;
}

/// Has the piece hold what is at the place; false behind the file's end.
bool PhotoNames::Reader::FillPiece() {
    constexpr std::size_t PIECE = 64 << 10;
    if (inPiece < piece.size()) return true;
    if (at >= names.inFile) return false;
    inPiece = 0;
    piece.resize(std::min(PIECE, names.inFile - at));
    ssize_t const got = pread(fileno(names.spill.get()), piece.data(), piece.size(), static_cast<off_t>(at));
    if (got <= 0) throw Failure(ExitCode::InputFailed, "the names of the photographs cannot be read again");
    piece.resize(static_cast<std::size_t>(got));
    return true;
}

std::string PhotoNames::Reader::NextText() {
    std::string text;
    while (FillPiece()) {
        std::size_t const end = std::min(piece.find('\0', inPiece), piece.size());
        bool const isWhole = end < piece.size();
        text.append(piece, inPiece, end - inPiece);
        at += end - inPiece + (isWhole ? 1 : 0);
        inPiece = end + (isWhole ? 1 : 0);
        if (isWhole) return text;
    }
    text = names.texts.c_str() + (at - names.inFile);
    at += text.size() + 1;
    return text;
}

} // namespace Velnor::Tool
