#pragma once

#include "Proc/Interfaces/IEffectContext.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace Velnor::Proc::Check {

using Bytes = std::vector<unsigned char>;

/// A picture whose samples (not the bytes between rows) are a fixed, patternless function of plane, row and column.
VideoHandle MakeNoise(IEffectContext& context, PixFmt format, std::uint32_t width, std::uint32_t height,
                      std::uint32_t seed = 1);

/// All samples of all planes, row by row, without what lies between rows.
Bytes Samples(IDataVideo const& picture);

/// Noise has next to no stroke in it: the first row becomes one on the object, the last one on the background.
void PaintStrokes(MutablePlane const& strokes);

/// "rgb24 3 x 5".
std::string NameOf(PixFmt format, std::uint32_t width, std::uint32_t height);

/// The caller's own memory around a picture: rows with bytes between them, and bytes before and after.
class GuardedPicture {
public:
    GuardedPicture(IEffectContext& context, IDataVideo const& content);

    /// A copy that shares the guarded samples: an effect may write to the picture that it is given.
    VideoHandle Share() const { return picture->MakeCopy(CopyMode::Value); }
    bool IsUntouched() const { return memory == original; }

private:
    Bytes memory;
    Bytes original;
    VideoHandle picture;
};

/// All that a caller can see of a picture, the bytes between its rows included.
class Sight {
public:
    explicit Sight(DataHandle const& data);
    friend bool operator==(Sight const&, Sight const&) = default;

private:
    void Add(ConstPlane const& plane);

    IData const* object;
    std::uint64_t id = 0;
    PixFmt format = PixFmt::NONE;
    Rectangle rectangle;
    std::array<std::int64_t, 2> attributes{};
    Bytes bytes;
};

std::vector<Sight> SeeAll(std::vector<DataHandle> const& pictures);

} // namespace Velnor::Proc::Check
