#pragma once

#include "Proc/Interfaces/Color.h"
#include "Proc/Interfaces/IEffectContext.h"
#include "Proc/Interfaces/ProcException.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Velnor::Proc {

/// What a picture file could not do; the description names the file. One type for each way a caller can react.
class VELNOR_API FileException : public ProcException {};
class VELNOR_API FileInputException : public FileException {}; ///< Missing, damaged, or no picture.
/// Damaged; ReadOptions::acceptDamaged keeps what can be read.
class VELNOR_API FileDamageException : public FileInputException {};
class VELNOR_API FileOutputException : public FileException {}; ///< Exists already, or could not be written.
class VELNOR_API FileLimitException : public FileException {};  ///< Over a limit of the reader.

/// Over a limit that ReadOptions sets.
class VELNOR_API FilePixelsException : public FileLimitException {};
class VELNOR_API FileMemoryException : public FileLimitException {};
class VELNOR_API FileExpansionException : public FileLimitException {};

/// What a picture file carries beside its pixels: EXIF with maker notes and GPS, IPTC, XMP, ICC profile, resolution,
/// comment, and the file's times. Opaque: it goes from the reader to the writer. The copy that the writer makes shows
/// no thumbnail, since that would show the unprocessed picture; it says that the picture is upright and how large.
class VELNOR_API PictureMetadata {
public:
    virtual ~PictureMetadata();
};

/// What a file's header tells of reading it.
struct PictureHeader {
    std::uint64_t pixels = 0;
    std::uint64_t memory = 0; ///< Bytes that reading takes at its height, the picture included.
};

struct ReadOptions {
    std::uint64_t maxPixels = 512'000'000; ///< Checked on the header, before a pixel is decoded.
    /// Keep the readable part of a damaged file; the rest is grey or black. Of HEIC and AVIF there is none.
    bool acceptDamaged = false;
    std::uint64_t maxMemory = 0; ///< Bytes that reading may take, by the header; 0: half of what there is.
    double maxExpansion = 0; ///< Of 64 megapixels and more: how many times their file they may take; 0: by the kind.
    /// Convert what has a colour profile other than sRGB by it: the picture then has that of sRGB, a grey one has none.
    bool toSrgb = false;
    /// Told once, when the file is found within the limits and before a pixel is decoded. It may wait until there is
    /// room.
    std::function<void(PictureHeader const&)> onHeader = {};
    /// A longer side that is enough: a JPEG file may be read at half, a quarter or an eighth of its size as long as it
    /// is no smaller, in a fraction of the time. 0: all of it.
    std::uint32_t enoughSide = 0;
};

/// What of the metadata is not written.
enum class Strip : std::uint8_t {
    None,
    Gps,       ///< Where the picture was taken, in EXIF and XMP.
    Thumbnail, ///< Previews in maker notes and pictures in XMP too; the usual thumbnails are never written.
    All,       ///< All but colour profile and resolution, without which the picture looks different.
};

/// How a picture is written. What a format has no use for must not be set (see RequireWriteOptions).
struct WriteOptions {
    /// 1 to 100, of JPEG, WebP, AVIF, HEIC and JPEG XL. Where it is not set, a JPEG file has that of the JPEG file that
    /// was read, and otherwise 90, AVIF and HEIC 70.
    std::optional<int> quality = {};
    bool overwrite = false; ///< Replace an existing file; else it is a FileOutputException.
    bool backup = false;    ///< Keep the file that is replaced, as "name.~1~", or with the next number that is free.
    /// An open file to write to in place of the path, which then gives the format and a name for messages. One that can
    /// be read and sought in too; it stays open, and what of it was written when writing fails is the caller's matter.
    int descriptor = -1;
    Strip strip = Strip::None;
    bool keepTimes = false; ///< The file gets the times of last access and change of the one that was read.
    /// Whether JPEG, AVIF and HEIC hold chroma at half the resolution. Where it is not set, a JPEG file does as the
    /// JPEG file that was read, and otherwise below a quality of 95.
    std::optional<bool> halvesChroma = {};
    bool isLossless = false;              ///< Of WebP and JPEG XL.
    std::string compression = {};         ///< Of PNG 0 to 9 (6), of TIFF none, lzw or deflate (lzw).
    Color background{255, 255, 255, 255}; ///< What transparency is laid on where the format has none.
};

/// A picture as it came from a file.
struct LoadedPicture {
    VideoHandle picture; ///< RGB24, RGBA, GRAY8 or YA8; upright, whatever the file says.
    std::shared_ptr<PictureMetadata const> metadata;
    std::vector<std::string> warnings; ///< What was lost in reading, a line for a person each.
};

/// Reads a picture file (JPEG, PNG, TIFF, WebP, GIF, HEIC, AVIF, JPEG XL, PNM, BMP, raw files of cameras), a regular
/// file, of several pages the first. Deeper samples are converted to 8 bits with rounding, CMYK and Lab to sRGB. Damage
/// is whatever the decoder warns of, and metadata that is not all there. Throws FileInputException; FileLimitException,
/// before a pixel is decoded; FileException with TranscodingErrors::OutOfMemory when memory runs out.
VELNOR_API LoadedPicture ReadPicture(std::filesystem::path const& path, IEffectContext& context,
                                     ReadOptions const& options = {});

/// Writes a picture, in a format by the file name's extension. The picture is in a format that the file can hold (see
/// GetWritableFormats); JPEG and PNM files also take RGBA and YA8, laid over the background. Palettes are kept exactly.
/// The file appears whole or not at all, even when the process is killed. What is replaced is a regular file, which
/// keeps its permissions; where the path is a link, the file that it leads to. Metadata may be null. Returns what was
/// left out since the format does not hold it, a line for a person or none. Throws FileOutputException.
VELNOR_API std::vector<std::string> WritePicture(std::filesystem::path const& path, IDataVideo const& picture,
                                                 PictureMetadata const* metadata, WriteOptions const& options = {});

/// What a colour of sRGB is among the colours of the picture that the metadata was read with, by its profile; the same
/// where it has none for RGB. Opacity stays. Metadata may be null. Throws FileException when no file can be read.
VELNOR_API Color ToPhotosColor(Color const& color, PictureMetadata const* metadata);

/// Throws FileOutputException when an option is set that a file of this name has no use for, or has a value that it
/// does not take. WritePicture asks the same.
VELNOR_API void RequireWriteOptions(std::filesystem::path const& path, WriteOptions const& options);

/// The pixel formats that WritePicture takes for a file of this name, in order of preference. Throws
/// FileOutputException, naming the known extensions, when the name has none of them.
VELNOR_API std::vector<PixFmt> GetWritableFormats(std::filesystem::path const& path);

} // namespace Velnor::Proc
