#pragma once

#include "Core/PixFmt.h"
#include "Core/RefCountable.h"
#include "Proc/Interfaces/Color.h"
#include "Proc/Interfaces/FrameFormat.h"
#include "Proc/Interfaces/Plane.h"

#include <cstdint>

namespace Velnor::Proc {

enum class DataKind : std::uint32_t { Video = 0 };

/// How a copy of a picture relates to its source. Samples are never shared for good: whichever of the two is written
/// first gets its own, and only then are they duplicated.
enum class CopyMode : int {
    Share = 0,       ///< The picture alone: samples and extra alpha. The attributes start at 0.
    Value = 1,       ///< The frame as a value: samples, extra alpha and both attributes.
    Independent = 2, ///< As Value, for a caller about to write: the source never sees it.
};

/// A unit of data that flows between effects. The order of the virtual operations is binary contract; positions are
/// counted from one, the destructor being the first. One object belongs to one thread at a time, its count to all.
class VELNOR_API IData : public IRefCountable {
public:
    ~IData() override = default;                              // 1st
    virtual DataKind GetDataKind() const = 0;                 // 2nd
    virtual std::uint64_t GetId() const = 0;                  // 3rd: unique in the process, another for each copy
    virtual std::uint64_t GetMemorySize() const = 0;          // 4th: bytes held, counting shared samples whole
    virtual std::int64_t GetTimeStamp() const = 0;            // 5th: microseconds
    virtual void SetTimeStamp(std::int64_t microseconds) = 0; // 6th
    virtual std::int64_t GetDuration() const = 0;             // 7th: microseconds
    virtual void SetDuration(std::int64_t microseconds) = 0;  // 8th
    virtual void CopyAttributes(IData const& source) = 0;     // 9th: time stamp and duration
    virtual bool IsShared() const = 0;                        // 10th: whether a write would duplicate samples first
    virtual bool HasAlpha() const = 0;                        // 11th: own alpha or extra alpha
    virtual FrameFormat const& GetFrameFormat() const = 0;    // 12th
    virtual void SetAspect(std::uint32_t numerator, std::uint32_t denominator) = 0; // 13th: of a pixel
    virtual PixFmtDescription const& GetDescription() const = 0;                    // 14th: of the pixel format
    virtual PixFmt GetPixFmt() const = 0;                                           // 15th
};

/// A picture: planes of 8-bit samples in one of the formats of PixFmt, width x height pixels.
class VELNOR_API IDataVideo : public IData {
public:
    /// 16th. Where this picture lies in the samples it was cut from; (0, 0, width, height) for a whole one.
    virtual Rectangle GetRectangle() const = 0;

    /// 17th. Makes this picture the rectangle of itself: a view, no sample is touched. Throws ProcException, changing
    /// nothing, when the rectangle is empty, reaches out of the picture or cuts a chroma sample (see IsAligned).
    virtual void SetRectangle(std::uint32_t x, std::uint32_t y, std::uint32_t width, std::uint32_t height) = 0;

    /// 18th. Gives the picture an extra alpha plane, whose samples are copied: index 0 at the resolution of the luma or
    /// the packed pixels, index 1 at that of the chroma planes. One byte a sample; larger than needed is cut, smaller
    /// throws ProcException. An empty plane takes the extra alpha away.
    virtual void SetPlane(unsigned char index, ConstPlane const& alpha) = 0;

    /// 19th. The extra alpha plane of that index, empty when there is none.
    virtual ConstPlane GetExtraAlpha(unsigned char index) const = 0;

    /// 20th. Takes both extra alpha planes away.
    virtual void DropExtraAlpha() = 0;

    /// 21st. A plane to write to. Duplicates the samples first when they are shared. Throws ProcException when the
    /// format has no such plane.
    virtual MutablePlane GetMutablePlane(unsigned char index) = 0;

    /// 22nd. A plane to read.
    virtual ConstPlane GetPlane(unsigned char index) const = 0;

    /// 23rd. Paints every pixel, in the nearest colour that the format has; grey formats take the luma, palette formats
    /// become one entry. Alpha takes the colour's opacity.
    virtual void Fill(Color const& color) = 0;

    /// 24th. A part of this picture, sharing its samples: MakeCopy(Value), then SetRectangle.
    virtual intrusive_ptr<IDataVideo> MakePart(Rectangle const& part) const = 0;

    /// 25th. Makes the samples this picture's own now, so that the next GetMutablePlane cannot fail for lack of memory.
    virtual void Detach() = 0;

    /// 26th. A new picture with the same content.
    virtual intrusive_ptr<IDataVideo> MakeCopy(CopyMode mode) const = 0;

    /// 27th. Calls the samples by another format whose planes are laid out alike (rgb24 and bgr24, rgba and rgb0): no
    /// sample is touched. Throws ProcException, changing nothing, for a format whose planes differ.
    virtual void Relabel(PixFmt format) = 0;
};

using DataHandle = intrusive_ptr<IData>;
using ConstDataHandle = intrusive_ptr<IData const>;
using VideoHandle = intrusive_ptr<IDataVideo>;
using ConstVideoHandle = intrusive_ptr<IDataVideo const>;

/// The picture behind a handle. Throws ProcException when the handle is null or holds no picture.
VELNOR_API IDataVideo& AsVideo(DataHandle const& data);
VELNOR_API IDataVideo const& AsVideo(ConstDataHandle const& data);

/// Number of planes of the picture's format, the palette included.
VELNOR_API unsigned char GetPlanesCount(IDataVideo const& picture);

/// Lays one picture over another of the same format, its upper left pixel at (x, y) of the target, which may be
/// negative; what falls outside is left out. Attributes and extra alpha stay. Throws ProcException when the formats
/// differ or the place cuts a chroma sample.
VELNOR_API void CopyDataVideo(ConstVideoHandle const& source, VideoHandle const& target, int x, int y);

} // namespace Velnor::Proc
