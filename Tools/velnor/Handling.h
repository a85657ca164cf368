#pragma once

#include "Proc/Interfaces/IEffectContext.h"
#include "Proc/Interfaces/IEffectFactory.h"

#include <cstdint>

namespace Velnor::Tool {

/// A number that is the same for pictures with the same format, size and samples, and all but surely another for
/// others, unless they differ in a few rows only.
std::uint64_t Digest(Proc::IDataVideo const& picture);

/// How a photograph is handed to an effect and taken back, so that it loses nothing which the effect has no eye for:
/// grey goes in as colour and comes out grey only if it still is, and the transparency of a picture that comes back
/// opaque is put back.
class Handling {
public:
    /// Takes what is to be kept from the picture, and hands it as colour.
    Handling(Proc::DataHandle& picture, Proc::IEffectFactory& effectFactory);

    /// Puts back what was kept. Not to a picture of another size, nor to a mask (a grey picture), where it would have
    /// no meaning. Returns whether transparency was lost with the effect.
    bool TakeBack(Proc::DataHandle& picture) const;

private:
    bool PutBackAlpha(Proc::DataHandle& picture) const;
    void TakeBackGrey(Proc::DataHandle& picture) const;

    Proc::IEffectFactory& factory;
    bool wasGrey = false;
    Proc::DataHandle alpha; ///< GRAY8; null for an opaque picture.
};

/// A small picture with something of everything in it: for the question whether an effect changes anything at all.
Proc::DataHandle MakeSpecimen(Proc::IEffectContext& context);

} // namespace Velnor::Tool
