#include "Proc/Effects/General/BandScaler.h"

#include "Proc/Effects/Kit/Bands.h"

#include <algorithm>

namespace Velnor::Proc {
namespace {

constexpr SettingsResizer::ResizeMethods METHOD = SettingsResizer::AREA;

bool HasWholeRows(PixFmt format) {
    PixFmtDescription const& description = *PixFmtDescription::Find(format);
    return std::all_of(description.planes.begin(), description.planes.begin() + description.planesCount,
                       [](PlaneLayout const& plane) { return plane.shiftY == 0; });
}

template <class Side>
Side CutRows(Side side, Band const& rows) {
    side.height = rows.count;
    for (auto& plane : side.planes)
        if (!plane.IsEmpty()) plane = TakeRows(plane, rows);
    return side;
}

} // namespace

void BandScaler::Convert(ScalerSource const& source, ScalerTarget const& target) {
    std::vector<Band> const bands = CutIntoBands(source.width, source.height);
    if (bands.size() < 2 || bands.front().count < 2 || !HasWholeRows(source.format) || !HasWholeRows(target.format))
        return scaler.Scale(source, target, METHOD);

    if (workerScalers.size() < CountWorkers(bands)) workerScalers = std::vector<Scaler>(CountWorkers(bands));
    // The library writes past the end of a row, into the next: the last row of a band is left for later.
    RunBands(bands, [&](Band band, std::size_t worker) {
        if (band.first + band.count < source.height) --band.count;
        workerScalers[worker].Scale(CutRows(source, band), CutRows(target, band), METHOD);
    });
    for (std::size_t i = 1; i < bands.size(); ++i) ConvertRow(source, target, bands[i].first - 1);
}

/// By way of a row of its own, so that the next one stays as it is.
void BandScaler::ConvertRow(ScalerSource const& source, ScalerTarget const& target, std::uint32_t y) {
    constexpr std::uint64_t BEYOND = 64;
    ScalerTarget const inPlace = CutRows(target, {y, 1});
    ScalerTarget apart = inPlace;
    std::uint64_t bytes = 0;
    auto const lengthOf = [](MutablePlane const& plane) {
        return (plane.GetWidth() + BEYOND - 1) / BEYOND * BEYOND + BEYOND;
    };
    for (MutablePlane const& plane : inPlace.planes) bytes += lengthOf(plane);
    row.resize(bytes);
    unsigned char* free = row.data();
    for (MutablePlane& plane : apart.planes) {
        if (plane.IsEmpty()) continue;
        plane = {free, static_cast<std::int64_t>(lengthOf(plane)), plane.GetWidth(), 1, plane.GetSampleBytes()};
        free += lengthOf(plane);
    }
    scaler.Scale(CutRows(source, {y, 1}), apart, METHOD);
    for (std::size_t i = 0; i < apart.planes.size(); ++i)
        if (!apart.planes[i].IsEmpty()) CopyPlane(apart.planes[i], inPlace.planes[i]);
}

} // namespace Velnor::Proc
