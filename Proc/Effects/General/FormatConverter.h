#pragma once

#include "Proc/Effects/General/BandScaler.h"
#include "Proc/Interfaces/IEffectContext.h"

namespace Velnor::Proc {

/// Changes the pixel format of pictures, between any two formats of the table. Bytes that keep their numbers are moved
/// (grey and luma hold the same ones, as do all orders of red, green and blue); libswscale does the matrix and the
/// chroma resolution, by the mean going down and linearly between centred samples going up; a palette is made of the
/// picture's own colours, exact up to 256 of them. Alpha is kept where the target has it, opaque where the source has
/// none. One thread at a time.
class FormatConverter {
public:
    explicit FormatConverter(ContextHandle const& context) : pictures(context) {}

    /// A new picture in another format. Attributes and extra alpha are the caller's. Throws ProcException naming both
    /// formats for a pair that cannot be converted.
    VideoHandle Convert(IDataVideo const& source, PixFmt target);

    /// Changes the format of the picture itself, its only owner asking: possible when both formats pack red, green and
    /// blue into pixels of as many bytes. Returns whether it was; else the picture is as it was.
    static bool ConvertInPlace(IDataVideo& picture, PixFmt target);

    Scaler& GetScaler() { return scaler.GetScaler(); }

private:
    VideoHandle Make(IDataVideo const& source, PixFmt format) const;
    VideoHandle MoveSamples(IDataVideo const& source, PixFmt target);
    VideoHandle ChangePalette(IDataVideo const& source, PixFmt target);
    VideoHandle ChangeColour(IDataVideo const& source, PixFmt target);
    void ChangeChroma(IDataVideo const& source, IDataVideo& target);
    void ChangeMatrix(IDataVideo const& source, IDataVideo& target);

    ContextHandle pictures;
    BandScaler scaler;
};

/// The planar format that holds the samples of a format, byte for byte, with alpha where that has it; the format itself
/// when it is planar, packed red, green and blue, or grey. Palettes stand for themselves.
PixFmt GetPlanarTwin(PixFmtDescription const& format);

/// A palette picture (PAL8) of an RGBA picture: exact, in order of first appearance, for up to 256 colours; else the
/// means of 256 groups by median cut (Heckbert 1982) over colours of 5 bits a component and 3 bits of opacity. Where
/// they do not fit, all that is clear is one colour.
VideoHandle MakePalettePicture(IEffectContext& context, IDataVideo const& rgba);

} // namespace Velnor::Proc
