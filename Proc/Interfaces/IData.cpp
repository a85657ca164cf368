#include "Proc/Interfaces/IData.h"

#include "Proc/Interfaces/ProcException.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace Velnor::Proc {
namespace {

template <class Video, class Data>
Video& Cast(Data* data) {
    if (data == nullptr) VELNOR_THROW(ProcException, "A picture is needed, the handle is null.");
    auto* const video = dynamic_cast<Video*>(data);
    if (video == nullptr) VELNOR_THROW(ProcException, "A picture is needed, the handle holds other data.");
    return *video;
}

std::string Size(ConstPlane const& plane) {
    return std::to_string(plane.GetWidth()) + " bytes x " + std::to_string(plane.GetHeight()) + " rows";
}

/// One axis of an overlay: where in the source it begins, where in the target, and how many pixels fall on it.
struct Span {
    std::uint32_t from;
    std::uint32_t to;
    std::uint32_t length;
};

Span Overlap(std::uint32_t source, std::uint32_t target, std::int64_t at) {
    std::int64_t const begin = std::max<std::int64_t>(at, 0);
    std::int64_t const end = std::min<std::int64_t>(at + source, target);
    if (end <= begin) return {0, 0, 0};
    return {static_cast<std::uint32_t>(begin - at), static_cast<std::uint32_t>(begin),
            static_cast<std::uint32_t>(end - begin)};
}

} // namespace

IDataVideo& AsVideo(DataHandle const& data) { return Cast<IDataVideo>(data.get()); }
IDataVideo const& AsVideo(ConstDataHandle const& data) { return Cast<IDataVideo const>(data.get()); }

unsigned char GetPlanesCount(IDataVideo const& picture) { return picture.GetDescription().planesCount; }

void CopyPlane(Details::PlaneTemplate<1> const& source, Details::PlaneTemplate<0> const& target) {
    if (source.GetWidth() != target.GetWidth() || source.GetHeight() != target.GetHeight())
        VELNOR_THROW(ProcException, "Planes to copy differ in size: " + Size(source) + " into " + Size(target) + ".");
    for (std::uint64_t y = 0; y < source.GetHeight(); ++y)
        std::memmove(target.GetRow(y), source.GetRow(y), source.GetWidth());
}

void CopyDataVideo(ConstVideoHandle const& source, VideoHandle const& target, int x, int y) {
    if (!source || !target) VELNOR_THROW(ProcException, "A picture is needed, the handle is null.");
    PixFmtDescription const& format = target->GetDescription();
    if (source->GetPixFmt() != target->GetPixFmt())
        VELNOR_THROW(ProcException, "Pictures to copy differ in format: " + std::string(source->GetDescription().name) +
                                        " into " + std::string(format.name) + ".");
    FrameFormat const from = source->GetFrameFormat();
    FrameFormat const to = target->GetFrameFormat();
    Span const across = Overlap(from.width, to.width, x);
    Span const down = Overlap(from.height, to.height, y);
    if (across.length == 0 || down.length == 0) return;
    if (!format.IsAligned(across.from, down.from) || !format.IsAligned(across.to, down.to))
        VELNOR_THROW(ProcException, "Position " + std::to_string(x) + ", " + std::to_string(y) +
                                        " cuts a chroma sample of format " + std::string(format.name) + ".");
    for (unsigned char plane = 0; plane < format.planesCount; ++plane) {
        PlaneLayout const& layout = format.planes[plane];
        if (format.model == ColorModel::Palette && plane == 1) {
            CopyPlane(source->GetPlane(plane), target->GetMutablePlane(plane));
            continue;
        }
        auto const part = [&](auto const& whole, std::uint32_t left, std::uint32_t top) {
            return whole.MakeSubplane(left, top, across.length, down.length, layout.bytes, layout.shiftX,
                                      layout.shiftY);
        };
        CopyPlane(part(source->GetPlane(plane), across.from, down.from),
                  part(target->GetMutablePlane(plane), across.to, down.to));
    }
}

} // namespace Velnor::Proc
