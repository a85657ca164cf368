#include "Tools/velnor/Pieces.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace Velnor::Tool {
namespace {

using Proc::FrameFormat;
using Proc::Rectangle;

/// A length in a photograph as effects have resized it with its pieces.
std::uint32_t Scale(std::uint32_t length, std::uint32_t now, std::uint32_t then) {
    return now == then ? length : static_cast<std::uint32_t>(std::lround(static_cast<double>(length) * now / then));
}

/// Where the piece lies in the photograph.
Rectangle FindRectangle(Piece const& piece) {
    FrameFormat const& now = piece.picture->GetFrameFormat();
    FrameFormat const& then = piece.cut->piece;
    return {Scale(piece.place.x, now.width, then.width), Scale(piece.place.y, now.height, then.height), now.width,
            now.height};
}

bool AreOfOnePhotograph(std::vector<Piece> const& pieces) {
    return std::ranges::all_of(pieces, [](Piece const& piece) { return piece.cut.has_value(); });
}

/// What all pieces cover together.
FrameFormat FindCovered(std::vector<Piece> const& pieces) {
    FrameFormat covered = FrameFormat::Square(0, 0);
    for (Piece const& piece : pieces) {
        Rectangle const at = FindRectangle(piece);
        covered.width = std::max(covered.width, at.x + at.width);
        covered.height = std::max(covered.height, at.y + at.height);
    }
    return covered;
}

/// The picture as a view on a larger one, which is where pictures have their places from. The larger one's samples are
/// never touched.
Proc::DataHandle PutAt(Proc::IDataVideo const& picture, Rectangle const& at, Proc::IDataVideo const& larger) {
    Proc::VideoHandle const placed = larger.MakePart(at);
    placed->Fill(Proc::Color()); // On samples of its own from here.
    Proc::CopyDataVideo(Proc::ConstVideoHandle(&picture), placed, 0, 0);
    for (unsigned char index = 0; index < 2; ++index) placed->SetPlane(index, picture.GetExtraAlpha(index));
    placed->CopyAttributes(picture);
    return placed;
}

} // namespace

std::vector<Piece> CutPiece(Piece const& piece, std::vector<Proc::DataHandle> const& pictures) {
    FrameFormat const whole = piece.cut ? piece.cut->photograph : piece.picture->GetFrameFormat();
    // Places are counted from where the pieces begin together: the photograph may be a part of a larger picture itself.
    Place origin{UINT32_MAX, UINT32_MAX};
    for (Proc::DataHandle const& picture : pictures) {
        Rectangle const at = Proc::AsVideo(picture).GetRectangle();
        origin = {std::min(origin.x, at.x), std::min(origin.y, at.y)};
    }
    std::vector<Piece> pieces;
    for (Proc::DataHandle const& picture : pictures) {
        Rectangle const at = Proc::AsVideo(picture).GetRectangle();
        pieces.push_back({picture,
                          {piece.place.x + at.x - origin.x, piece.place.y + at.y - origin.y},
                          Piece::Cut{whole, picture->GetFrameFormat()}});
    }
    return pieces;
}

std::vector<Proc::DataHandle> PutInPlace(std::vector<Piece> const& pieces, Proc::IEffectContext& context) {
    bool const arePieces = pieces.size() > 1 && AreOfOnePhotograph(pieces);
    std::map<PixFmt, Proc::VideoHandle> canvases;
    std::vector<Proc::DataHandle> pictures;
    for (Piece const& piece : pieces) {
        if (!arePieces) {
            pictures.push_back(piece.picture);
            continue;
        }
        Proc::VideoHandle& canvas = canvases[piece.picture->GetPixFmt()];
        if (!canvas) canvas = context.CreateImage(piece.picture->GetPixFmt(), FindCovered(pieces));
        pictures.push_back(PutAt(Proc::AsVideo(Proc::ConstDataHandle(piece.picture)), FindRectangle(piece), *canvas));
    }
    return pictures;
}

Piece JoinPieces(std::vector<Piece> const& pieces, Proc::DataHandle const& joined) {
    if (!AreOfOnePhotograph(pieces)) return {joined, {}};
    FrameFormat const covered = FindCovered(pieces);
    FrameFormat const& made = joined->GetFrameFormat();
    FrameFormat const& now = pieces.front().picture->GetFrameFormat();
    Piece::Cut const& cut = *pieces.front().cut;
    std::uint32_t const width = Scale(cut.photograph.width, now.width, cut.piece.width);
    std::uint32_t const height = Scale(cut.photograph.height, now.height, cut.piece.height);
    bool const isWhole = made.width == covered.width && made.height == covered.height;
    if (isWhole && width <= made.width && height <= made.height)
        Proc::AsVideo(joined).SetRectangle(0, 0, width, height);
    return {joined, {}};
}

} // namespace Velnor::Tool
