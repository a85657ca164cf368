#pragma once

#include "Proc/Interfaces/Plane.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace Velnor::Proc {

/// Some rows of a picture.
struct Band {
    std::uint32_t first = 0;
    std::uint32_t count = 0;
};

/// The bands of rows that make up a picture, from the top, all but the last of equal height. One where the picture is
/// too small to be worth threads; else several a processor, since one of them may be slower than another.
std::vector<Band> CutIntoBands(std::uint32_t width, std::uint32_t height);

/// How many threads RunBands uses for so many bands: those of a processor each, 1 to the number of bands.
std::size_t CountWorkers(std::vector<Band> const& bands);

/// Does the work for every band; `worker`, below CountWorkers, tells the threads apart. Returns, or throws what one of
/// them threw, when all have ended.
void RunBands(std::vector<Band> const& bands, std::function<void(Band const& band, std::size_t worker)> const& work);

/// Does the work for every row of a picture, in its bands.
void RunRows(std::uint32_t width, std::uint32_t height, std::function<void(std::uint32_t y)> const& work);

/// The rows of a plane that has as many as the picture.
template <int ReadOnly>
Details::PlaneTemplate<ReadOnly> TakeRows(Details::PlaneTemplate<ReadOnly> const& plane, Band const& rows) {
    return {plane.GetRow(rows.first), plane.GetStride(), plane.GetWidth(), rows.count, plane.GetSampleBytes()};
}

} // namespace Velnor::Proc
