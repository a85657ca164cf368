#include "Proc/Effects/Photo/OpenCV/CVPicture.h"

#include <limits>

namespace Velnor::Proc {
namespace {

template <class Predicate>
std::vector<PixFmt> SelectFormats(Predicate const& isWanted) {
    std::vector<PixFmt> formats;
    for (PixFmtDescription const& format : PixFmtDescription::GetAll())
        if (isWanted(format)) formats.push_back(format.format);
    return formats;
}

bool HasPlanesOfOneKind(PixFmtDescription const& format) {
    if (format.model == ColorModel::Palette) return false;
    return format.model != ColorModel::Luma || format.planesCount > 1;
}

bool IsSubsampled(PixFmtDescription const& format) { return format.chromaShiftX != 0 || format.chromaShiftY != 0; }

} // namespace

cv::Mat ViewOf(MutablePlane const& plane, PlaneLayout const& layout) {
    if (plane.GetStride() < 0)
        VELNOR_THROW(EffectException, "A picture whose rows are stored bottom-up cannot be written by OpenCV.");
    std::uint64_t const columns = plane.GetWidth() / layout.bytes;
    constexpr std::uint64_t MOST = std::numeric_limits<std::int16_t>::max();
    if (columns > MOST || plane.GetHeight() > MOST)
        VELNOR_THROW(EffectException, "The picture is " + SizeText(columns, plane.GetHeight()) +
                                          "; OpenCV takes sides up to " + std::to_string(MOST) + ".");
    return {static_cast<int>(plane.GetHeight()), static_cast<int>(columns), CV_8UC(layout.bytes), plane.GetData(),
            static_cast<std::size_t>(plane.GetStride())};
}

cv::Mat const ViewOf(ConstPlane const& plane, PlaneLayout const& layout) {
    auto* const samples = const_cast<unsigned char*>(plane.GetData());
    return ViewOf(MutablePlane(samples, plane.GetStride(), plane.GetWidth(), plane.GetHeight()), layout);
}

cv::Mat const ReadPlane(IDataVideo const& picture, unsigned char index) {
    ConstPlane const plane = picture.GetPlane(index);
    PlaneLayout const& layout = picture.GetDescription().planes[index];
    if (plane.GetStride() >= 0) return ViewOf(plane, layout);
    ConstPlane const upright(plane.GetRow(plane.GetHeight() - 1), -plane.GetStride(), plane.GetWidth(),
                             plane.GetHeight());
    cv::Mat copy;
    cv::flip(ViewOf(upright, layout), copy, 0);
    return copy;
}

std::vector<PixFmt> const& PlaneFormats() {
    static std::vector<PixFmt> const formats = SelectFormats(&HasPlanesOfOneKind);
    return formats;
}

std::vector<PixFmt> const& FullFormats() {
    static std::vector<PixFmt> const formats = SelectFormats(
        [](PixFmtDescription const& format) { return HasPlanesOfOneKind(format) && !IsSubsampled(format); });
    return formats;
}

std::vector<PixFmt> const& LumaPlaneFormats() {
    static std::vector<PixFmt> const formats = SelectFormats([](PixFmtDescription const& format) {
        return format.format == PixFmt::GRAY8 || (format.model == ColorModel::Luma && HasPlanesOfOneKind(format));
    });
    return formats;
}

} // namespace Velnor::Proc
