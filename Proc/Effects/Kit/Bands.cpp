#include "Proc/Effects/Kit/Bands.h"

#include "Core/Processors.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <system_error>

namespace Velnor::Proc {

std::vector<Band> CutIntoBands(std::uint32_t width, std::uint32_t height) {
    constexpr std::uint64_t PIXELS_WORTH_A_THREAD = 1U << 20;
    constexpr std::uint32_t BANDS_A_PROCESSOR = 8;
    unsigned const threads = Core::GetThreadsPerPicture();
    bool const isShared = threads > 1 && std::uint64_t{width} * height >= 2 * PIXELS_WORTH_A_THREAD;
    std::uint32_t const wanted = isShared ? threads * BANDS_A_PROCESSOR : 1;
    std::uint32_t const rows = std::max(1U, (height + wanted - 1) / wanted);
    std::vector<Band> bands;
    for (std::uint32_t first = 0; first < height; first += rows)
        bands.push_back({first, std::min(rows, height - first)});
    return bands;
}

std::size_t CountWorkers(std::vector<Band> const& bands) {
    return std::clamp<std::size_t>(Core::GetThreadsPerPicture(), 1, std::max<std::size_t>(1, bands.size()));
}

void RunBands(std::vector<Band> const& bands, std::function<void(Band const& band, std::size_t worker)> const& work) {
    std::atomic<std::size_t> next = 0;
    auto const takeBands = [&](std::size_t worker) {
        for (std::size_t i = next++; i < bands.size(); i = next++) work(bands[i], worker);
    };
    std::vector<std::future<void>> others;
    try {
        for (std::size_t worker = 1; worker < CountWorkers(bands); ++worker)
            others.push_back(std::async(std::launch::async, takeBands, worker));
    } catch (std::system_error const&) { // No more threads to be had: those that there are do it all.
    }
    takeBands(0);
    for (std::future<void>& other : others) other.get(); // One that throws waits for the rest as it is destroyed.
}

void RunRows(std::uint32_t width, std::uint32_t height, std::function<void(std::uint32_t y)> const& work) {
    RunBands(CutIntoBands(width, height), [&](Band const& band, std::size_t) {
        for (std::uint32_t y = band.first; y < band.first + band.count; ++y) work(y);
    });
}

} // namespace Velnor::Proc
