#pragma once

#include "Proc/Host/PictureFile.h"
#include "Proc/Interfaces/IEffectFactory.h"
#include "Tools/velnor/EffectCatalogue.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Velnor::Tool {

/// A photograph as small as it is looked at.
struct SmallPhoto {
    Proc::DataHandle picture;
    std::shared_ptr<Proc::PictureMetadata const> metadata;
};

/// Reads a photograph no larger than `side` on its longer side. Where the kind of file allows, it is decoded small at
/// once.
SmallPhoto ReadSmallPhoto(std::string const& file, std::uint32_t side, EffectCatalogue const& catalogue,
                          Proc::ReadOptions reading);

/// The picture shrunk until its longer side is no more than `side`.
void ShrinkInside(Proc::DataHandle& picture, std::uint32_t side, Proc::IEffectFactory& factory);

/// What the effects, as they are typed, make of a small photograph. Of an effect that cuts it up the first piece.
/// Throws what EffectStep throws.
Proc::DataHandle RunEffects(SmallPhoto const& photo, std::vector<std::string> const& effects,
                            EffectCatalogue const& catalogue, Proc::ReadOptions const& reading);

} // namespace Velnor::Tool
