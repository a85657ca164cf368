#include "Proc/Effects/General/BandScaler.h"

#include "Proc/Interfaces/Plane.h"

#include <algorithm>
#include <future>
#include <thread>

namespace Velnor::Proc {
namespace {

constexpr std::uint64_t WORTH_A_THREAD = 1U << 20; ///< Pixels.
constexpr SettingsResizer::ResizeMethods METHOD = SettingsResizer::AREA;

bool HasWholeRows(PixFmt format) {
    PixFmtDescription const& description = *PixFmtDescription::Find(format);
    return std::all_of(description.planes.begin(), description.planes.begin() + description.planesCount,
                       [](PlaneLayout const& plane) { return plane.shiftY == 0; });
}

template <class Side>
Side TakeRows(Side side, std::uint32_t first, std::uint32_t count) {
    side.height = count;
    for (auto& plane : side.planes)
        if (!plane.IsEmpty())
            plane = {plane.GetRow(first), plane.GetStride(), plane.GetWidth(), count, plane.GetSampleBytes()};
    return side;
}

} // namespace

void BandScaler::Convert(ScalerSource const& source, ScalerTarget const& target) {
    std::uint64_t const pixels = std::uint64_t{source.width} * source.height;
    auto const bands = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(std::max(1U, std::thread::hardware_concurrency()), pixels / WORTH_A_THREAD));
    if (bands < 2 || source.height < 2 * bands || !HasWholeRows(source.format) || !HasWholeRows(target.format))
        return scaler.Scale(source, target, METHOD);

    if (bandScalers.size() < bands) bandScalers = std::vector<Scaler>(bands);
    auto const firstRow = [&](std::uint32_t band) {
        return static_cast<std::uint32_t>(std::uint64_t{source.height} * band / bands);
    };
    std::vector<std::future<void>> running;
    for (std::uint32_t band = 0; band < bands; ++band) {
        std::uint32_t const first = firstRow(band);
        // The library writes past the end of a row, into the next: the last row of a band is left for later.
        std::uint32_t const count = firstRow(band + 1) - first - (band + 1 < bands ? 1 : 0);
        running.push_back(std::async(std::launch::async, [this, &source, &target, band, first, count] {
            bandScalers[band].Scale(TakeRows(source, first, count), TakeRows(target, first, count), METHOD);
        }));
    }
    for (std::future<void>& band : running) band.get(); // One that throws waits for the others as it is destroyed.
    for (std::uint32_t band = 1; band < bands; ++band) ConvertRow(source, target, firstRow(band) - 1);
}

/// By way of a row of its own, so that the next one stays as it is.
void BandScaler::ConvertRow(ScalerSource const& source, ScalerTarget const& target, std::uint32_t y) {
    constexpr std::uint64_t BEYOND = 64;
    ScalerTarget const inPlace = TakeRows(target, y, 1);
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
    scaler.Scale(TakeRows(source, y, 1), apart, METHOD);
    for (std::size_t i = 0; i < apart.planes.size(); ++i)
        if (!apart.planes[i].IsEmpty()) CopyPlane(apart.planes[i], inPlace.planes[i]);
}

} // namespace Velnor::Proc
