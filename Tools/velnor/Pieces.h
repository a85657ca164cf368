#pragma once

#include "Proc/Interfaces/IEffectContext.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace Velnor::Tool {

/// Where a piece of a photograph begins, in pixels of the photograph as it was when it was cut up.
struct Place {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    friend bool operator==(Place const&, Place const&) = default;
};

/// A photograph on its way through the effects, or one of its pieces after an effect that cuts it up.
struct Piece {
    /// What is known of a piece beside where it begins, so that it can be put back after effects that made it anew.
    struct Cut {
        Proc::FrameFormat photograph; ///< As it was when it was cut up.
        Proc::FrameFormat piece;      ///< As it came out.
    };
    Proc::DataHandle picture;
    Place place;
    std::optional<Cut> cut = {}; ///< None for a whole photograph.
};

/// What an effect cut the piece into; the pictures know where they lie in it.
std::vector<Piece> CutPiece(Piece const& piece, std::vector<Proc::DataHandle> const& pictures);

/// The pieces' pictures, each knowing where it lies in the photograph, even when an effect has made it anew or in
/// another size. Whole photographs are left as they are.
std::vector<Proc::DataHandle> PutInPlace(std::vector<Piece> const& pieces, Proc::IEffectContext& context);

/// The picture that an effect has made of the pieces: without what was added to the photograph's right and lower sides
/// so that the pieces covered it.
Piece JoinPieces(std::vector<Piece> const& pieces, Proc::DataHandle const& joined);

} // namespace Velnor::Tool
