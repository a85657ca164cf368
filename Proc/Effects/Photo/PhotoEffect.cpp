#include "Proc/Effects/Photo/PhotoEffect.h"

namespace Velnor::Proc {
namespace {

template <class Takes>
std::vector<PixFmt> Collect(Takes const& takes) {
    std::vector<PixFmt> formats;
    for (PixFmtDescription const& format : PixFmtDescription::GetAll())
        if (takes(format)) formats.push_back(format.format);
    return formats;
}

bool HasLumaPlane(PixFmtDescription const& format) {
    return format.format == PixFmt::GRAY8 || (format.model == ColorModel::Luma && format.planesCount >= 2);
}

} // namespace

std::vector<PixFmt> const& PlanarOrPackedFormats() {
    static std::vector<PixFmt> const formats = Collect([](PixFmtDescription const& format) {
        return HasLumaPlane(format) || format.model == ColorModel::Rgb || format.model == ColorModel::Grey;
    });
    return formats;
}

std::vector<PixFmt> const& LumaPlaneFormats() {
    static std::vector<PixFmt> const formats = Collect(HasLumaPlane);
    return formats;
}

} // namespace Velnor::Proc
