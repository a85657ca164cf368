#pragma once

#include "Proc/Interfaces/IData.h"
#include "Proc/Settings/SettingsResizer.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

struct SwsContext;

namespace Velnor::Proc {

/// A picture as libswscale sees it: planes of a format, which need not be all planes of the picture they come from (the
/// first three of a format with an alpha plane are a picture of the format without; any plane is a grey picture).
template <class Plane>
struct ScalerSide {
    PixFmt format = PixFmt::NONE;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::array<Plane, 4> planes{};
    bool isWords = false; ///< Of format YA8: its two bytes a pixel are one number, of 16 bits in the machine's order.
};
using ScalerSource = ScalerSide<ConstPlane>;
using ScalerTarget = ScalerSide<MutablePlane>;

/// One plane as a grey picture.
inline ScalerSource AsGrey(ConstPlane const& plane) {
    return {PixFmt::GRAY8,
            static_cast<std::uint32_t>(plane.GetWidth()),
            static_cast<std::uint32_t>(plane.GetHeight()),
            {plane}};
}
inline ScalerTarget AsGrey(MutablePlane const& plane) {
    return {PixFmt::GRAY8,
            static_cast<std::uint32_t>(plane.GetWidth()),
            static_cast<std::uint32_t>(plane.GetHeight()),
            {plane}};
}

/// libswscale: full range BT.601 on both sides, accurate rounding, full chroma. Keeps the contexts of the last few
/// geometries, since making one costs more than a small picture. One thread at a time.
///
/// libswscale works in vectors: it reads up to 64 bytes past the end of a source's row and writes as far past the end
/// of a target's. The last rows of a source are therefore handed over from memory of the scaler's own, so that nothing
/// outside the picture is read that might not exist. A target must be a new picture, whole, whose rows begin on
/// 64-byte boundaries: the bytes between its rows change.
class Scaler {
public:
    Scaler();
    ~Scaler();
    Scaler(Scaler const&) = delete;
    Scaler& operator=(Scaler const&) = delete;

    /// Converts and resizes in one go. Formats are those without a palette that libswscale knows. Ratios beyond
    /// GetLargestShrink are the caller's to split. A target of more than one plane whose planes come out one sample
    /// wide or high from more than one is the caller's to avoid (see ScaleByMeans). Throws ProcException naming formats
    /// and sizes when libswscale refuses.
    void Scale(ScalerSource const& source, ScalerTarget const& target, SettingsResizer::ResizeMethods method);

    /// How many times smaller than its source a target may be in one step: filters have at most 204 taps.
    VELNOR_API static std::uint32_t GetLargestShrink(SettingsResizer::ResizeMethods method);

private:
    struct Geometry {
        int sourceFormat, sourceWidth, sourceHeight;
        int targetFormat, targetWidth, targetHeight;
        int flags;
        friend bool operator==(Geometry const&, Geometry const&) = default;
    };
    struct FreeContext {
        void operator()(SwsContext* context) const;
    };
    using ContextPointer = std::unique_ptr<SwsContext, FreeContext>;
    struct Entry {
        Geometry geometry;
        ContextPointer context;
    };

    static ContextPointer MakeContext(Geometry const& geometry);
    void ScaleAtOnce(ScalerSource const& source, ScalerTarget const& target, SettingsResizer::ResizeMethods method);
    void ScaleByMeans(ScalerSource const& source, ScalerTarget const& target, SettingsResizer::ResizeMethods method);
    SwsContext* FindContext(Geometry const& geometry);
    ScalerSource CopyRows(ScalerSource const& source, std::uint32_t firstRow);

    std::vector<Entry> entries; ///< Most recently used first.
    std::vector<unsigned char> tail;
    std::vector<unsigned char> means;
};

} // namespace Velnor::Proc
