#include "Proc/Effects/Lumetta/GridCut/GridRegions.h"

#include <algorithm>
#include <numeric>
#include <thread>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

namespace Velnor::Proc {
namespace {

constexpr std::uint32_t UNLOCKED = 1;
constexpr std::uint32_t LOCKED = 2;

/// Holds the lock word. There are more workers than processors, so the holder may be waiting for one: spinning gives
/// way to it soon.
class Lock {
public:
    explicit Lock(std::atomic<std::uint32_t>& lockWord) : word(lockWord) {
        for (unsigned tries = 0; !TryLock(); ++tries) {
            if (tries < 64)
                Pause();
            else
                std::this_thread::yield();
        }
    }
    Lock(Lock const&) = delete;
    Lock& operator=(Lock const&) = delete;
    ~Lock() {
        std::uint32_t expected = LOCKED;
        word.compare_exchange_strong(expected, UNLOCKED, std::memory_order_release, std::memory_order_relaxed);
    }

private:
    bool TryLock() {
        std::uint32_t expected = UNLOCKED;
        return word.compare_exchange_weak(expected, LOCKED, std::memory_order_acquire, std::memory_order_relaxed);
    }
    static void Pause() {
#if defined(__x86_64__) || defined(__i386__)
        _mm_pause();
#endif
    }

    std::atomic<std::uint32_t>& word;
};

std::uint32_t ListNodes(Kernels::GridLayout const& layout, std::uint32_t region, bool isVertical,
                        std::uint32_t* nodes) {
    Kernels::NodeRect const rect = layout.GetRegion(region);
    std::uint32_t count = 0;
    if (isVertical)
        for (std::uint32_t y = rect.y0; y < rect.y1; ++y) nodes[count++] = layout.GetNode(rect.x1 - 1, y);
    else
        for (std::uint32_t x = rect.x0; x < rect.x1; ++x) nodes[count++] = layout.GetNode(x, rect.y1 - 1);
    return count;
}

} // namespace

GridRegions::GridRegions(Kernels::GridLayout const& layout, std::uint32_t* nodes)
    : lockWord(UNLOCKED),
      parents(layout.GetRegionsCount()),
      stamps(layout.GetRegionsCount(), 0),
      busy(std::make_unique<std::atomic<std::uint8_t>[]>(layout.GetRegionsCount())) {
    std::iota(parents.begin(), parents.end(), 0U);
    for (std::uint32_t region = 0; region < parents.size(); ++region) busy[region].store(1, std::memory_order_relaxed);

    records.reserve(layout.GetBoundariesCount());
    std::uint32_t const across = layout.GetRegionsAcross();
    auto const add = [&](std::uint32_t first, std::uint32_t second, bool isVertical) {
        std::uint32_t const count = ListNodes(layout, first, isVertical, nodes);
        records.push_back({first, second, isVertical ? 1U : 0U, count, nodes});
        nodes += Kernels::GridLayout::MAX_REGION_SIDE;
    };
    for (std::uint32_t region = 0; region < parents.size(); ++region) {
        if (region % across + 1 < across) add(region, region + 1, true);
        if (region / across + 1 < layout.GetRegionsDown()) add(region, region + across, false);
    }
}

GridRegions::Merge GridRegions::Take(StopQuery const& isStopped) {
    Lock const lock(lockWord);
    Merge merge;
    std::vector<BoundaryRecord> kept;
    kept.reserve(records.size());
    for (BoundaryRecord const& record : records) {
        if (isStopped()) return {};
        std::uint32_t const first = FindRoot(record.first);
        std::uint32_t const second = FindRoot(record.second);
        bool const isOurs = !merge.records.empty() && first == merge.root && second == merge.root;
        if (merge.records.empty() && !IsBusy(first) && !IsBusy(second)) {
            parents[first] = second;
            stamps[second] = std::max(stamps[first], stamps[second]);
            busy[second].store(1, std::memory_order_relaxed); // the next reader holds the lock
            merge.root = second;
            merge.stamp = stamps[second];
            merge.records.push_back(record);
        } else if (isOurs) {
            merge.records.push_back(record);
        } else {
            kept.push_back(record);
        }
    }
    records.swap(kept);
    merge.isLast = records.empty();
    for (std::uint32_t region = 0; region < parents.size() && !merge.records.empty(); ++region)
        if (FindRoot(region) == merge.root) merge.regions.push_back(region);
    return merge;
}

void GridRegions::SetIdle(std::uint32_t root, std::uint32_t stamp) {
    stamps[root] = stamp;
    busy[root].store(0, std::memory_order_release);
}

std::uint32_t GridRegions::FindRoot(std::uint32_t region) {
    std::uint32_t root = region;
    while (parents[root] != root) root = parents[root];
    while (parents[region] != root) {
        std::uint32_t const next = parents[region];
        parents[region] = root;
        region = next;
    }
    return root;
}

} // namespace Velnor::Proc
