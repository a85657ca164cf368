#include "Proc/Host/FillPlane.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace Velnor::Proc {
namespace {

/// Bytes of one sample group; no format has more than 6.
using Group = std::array<unsigned char, 8>;

/// Values of the components, in the order of PixFmtDescription::components.
std::array<unsigned char, 3> GetComponents(ColorModel model, Color const& color) {
    if (model == ColorModel::Luma || model == ColorModel::Grey) return {color.y(), color.u(), color.v()};
    return {color.GetRed(), color.GetGreen(), color.GetBlue()};
}

Group MakeGroup(PixFmtDescription const& description, unsigned char plane, Color const& color) {
    Group group;
    if (description.model == ColorModel::Palette && plane == 0) {
        group.fill(0); // An index, not a colour.
        return group;
    }
    std::array<unsigned char, 3> const values = GetComponents(description.model, color);
    // Packed luma formats hold several lumas a group, of which the record names the first.
    group.fill(description.model == ColorModel::Luma ? values[0] : 255);
    for (std::size_t i = 0; i < description.componentsCount; ++i) {
        ComponentPlace const& place = description.components[i];
        if (place.plane == plane) group[place.offset] = values[i];
    }
    if (description.hasAlpha && description.alpha.plane == plane) group[description.alpha.offset] = color.GetOpacity();
    return group;
}

/// Fills a row with a group, doubling what is there already.
void FillRow(unsigned char* row, std::uint64_t bytes, Group const& group, std::uint64_t groupBytes) {
    std::uint64_t done = std::min(bytes, groupBytes);
    std::memcpy(row, group.data(), done);
    while (done < bytes) {
        std::uint64_t const more = std::min(done, bytes - done);
        std::memcpy(row + done, row, more);
        done += more;
    }
}

} // namespace

void FillPlane(MutablePlane const& plane, PixFmtDescription const& description, unsigned char index,
               Color const& color) {
    if (plane.IsEmpty()) return;
    Group const group = MakeGroup(description, index, color);
    FillRow(plane.GetRow(0), plane.GetWidth(), group, description.planes[index].bytes);
    for (std::uint64_t y = 1; y < plane.GetHeight(); ++y)
        std::memcpy(plane.GetRow(y), plane.GetRow(0), plane.GetWidth());
}

} // namespace Velnor::Proc
