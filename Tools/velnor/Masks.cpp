#include "Tools/velnor/Masks.h"

#include "Tools/velnor/Conversion.h"

#include <utility>

namespace Velnor::Tool {
namespace {

void LayOverBlack(Proc::IDataVideo const& source, Proc::IDataVideo& mask) {
    Proc::ConstPlane const from = source.GetPlane(0);
    Proc::MutablePlane const to = mask.GetMutablePlane(0);
    for (std::uint64_t y = 0; y < to.GetHeight(); ++y) {
        unsigned char const* const pixels = from.GetRow(y);
        unsigned char* const row = to.GetRow(y);
        for (std::uint64_t x = 0; x < to.GetWidth(); ++x)
            row[x] = static_cast<unsigned char>((pixels[2 * x] * pixels[2 * x + 1] + 127) / 255);
    }
}

} // namespace

Proc::DataHandle MakeMask(Proc::DataHandle picture, Proc::IEffectFactory& factory) {
    bool const hasAlpha = picture->GetDescription().hasAlpha;
    Proc::DataHandle mask = picture;
    if (hasAlpha) mask = Proc::AsVideo(picture).MakeCopy(Proc::CopyMode::Value);
    Convert(mask, {PixFmt::GRAY8}, factory);
    if (!hasAlpha) return mask;
    Convert(picture, {PixFmt::YA8}, factory);
    LayOverBlack(Proc::AsVideo(Proc::ConstDataHandle(picture)), Proc::AsVideo(mask));
    return mask;
}

void WriteAlpha(Proc::DataHandle& picture, Proc::ConstPlane const& alpha, Proc::IEffectFactory& factory) {
    bool const isGrey = picture->GetDescription().model == ColorModel::Grey;
    bool const hasPlace = picture->GetDescription().hasAlpha && picture->GetPixFmt() != PixFmt::PAL8;
    if (!hasPlace) Convert(picture, {isGrey ? PixFmt::YA8 : PixFmt::RGBA}, factory);
    Proc::IDataVideo& video = Proc::AsVideo(picture);
    ComponentPlace const place = video.GetDescription().alpha;
    std::size_t const step = video.GetDescription().planes[place.plane].bytes;
    Proc::MutablePlane const plane = video.GetMutablePlane(place.plane);
    for (std::uint64_t y = 0; y < alpha.GetHeight(); ++y) {
        unsigned char const* const from = alpha.GetRow(y);
        unsigned char* const to = plane.GetRow(y) + place.offset;
        for (std::uint64_t x = 0; x < alpha.GetWidth(); ++x) to[x * step] = from[x];
    }
}

void TakeExtraAlpha(Proc::DataHandle& picture, Proc::IEffectFactory& factory) {
    Proc::ConstPlane const alpha = Proc::AsVideo(picture).GetExtraAlpha(0);
    if (picture->GetDescription().hasAlpha || alpha.IsEmpty()) return;
    Proc::DataHandle const owner = picture; // Of the alpha's samples, while another picture is made.
    WriteAlpha(picture, alpha, factory);
    Proc::AsVideo(picture).DropExtraAlpha();
}

} // namespace Velnor::Tool
