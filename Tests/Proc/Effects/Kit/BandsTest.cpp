#include "Proc/Effects/Kit/Bands.h"

#include "Proc/Interfaces/ProcException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace Velnor::Proc {
namespace {

TEST(Bands, CoverEachRowOnceOnWhateverThreads) {
    for (auto const& [width, height] : {std::pair{1U, 1U}, {4000U, 3001U}, {3'000'000U, 5U}, {3U, 1'500'000U}}) {
        std::vector<Band> const bands = CutIntoBands(width, height);
        std::vector<int> done(height);
        std::mutex mutex;
        std::size_t largestWorker = 0;
        RunBands(bands, [&](Band const& band, std::size_t worker) {
            for (std::uint32_t y = band.first; y < band.first + band.count; ++y) ++done[y];
            std::scoped_lock const lock(mutex);
            largestWorker = std::max(largestWorker, worker);
        });
        EXPECT_EQ(done, std::vector<int>(height, 1)) << width << " x " << height;
        EXPECT_LT(largestWorker, CountWorkers(bands));
    }
    EXPECT_EQ(CutIntoBands(100, 100).size(), 1U) << "too small for threads";
}

TEST(Bands, AnErrorEndsItsThreadAndIsThrownWhenAllHaveEnded) {
    std::vector<Band> const bands = CutIntoBands(2000, 2000);
    std::atomic<std::size_t> started = 0;
    std::atomic<std::size_t> ended = 0;
    EXPECT_THROW(RunBands(bands,
                          [&](Band const& band, std::size_t) {
                              if (band.first == 0) VELNOR_THROW(ProcException, "first band");
                              ++started;
                              std::this_thread::sleep_for(std::chrono::milliseconds(2));
                              ++ended;
                          }),
                 ProcException);
    EXPECT_EQ(started, ended);
}

} // namespace
} // namespace Velnor::Proc
