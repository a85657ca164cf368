#include "Proc/Host/MemoryPool.h"

#include <malloc.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace Velnor::Proc {
namespace {

std::align_val_t AlignmentOf(std::uint64_t bytes) {
    return std::align_val_t(bytes >= MemoryPool::HUGE_PAGE ? MemoryPool::HUGE_PAGE : MemoryPool::ALIGNMENT);
}

unsigned char* AllocateFromSystem(std::uint64_t bytes) {
    void* const data = ::operator new(bytes, AlignmentOf(bytes));
    // Only a wish: without huge pages everything works, slower.
    if (bytes >= MemoryPool::HUGE_PAGE) (void)madvise(data, bytes, MADV_HUGEPAGE);
    return static_cast<unsigned char*>(data);
}

/// A linear congruential sequence (Knuth's MMIX constants): no two neighbours alike, no two blocks alike.
void FillWithPattern(unsigned char* data, std::uint64_t bytes, std::uint64_t seed) {
    std::uint64_t state = seed;
    for (std::uint64_t at = 0; at < bytes; at += sizeof(state)) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        std::memcpy(data + at, &state, std::min<std::uint64_t>(sizeof(state), bytes - at));
    }
}

} // namespace

#ifdef VELNOR_FILL_NEW_PICTURES
bool const MemoryLimits::FILL_NEW_BY_DEFAULT = true;
#else
bool const MemoryLimits::FILL_NEW_BY_DEFAULT = false;
#endif

MemoryBlock::MemoryBlock(std::shared_ptr<MemoryPool> origin, unsigned char* memory, std::uint64_t bytes)
    : pool(std::move(origin)), data(memory), capacity(bytes) {}

MemoryBlock::~MemoryBlock() {
    if (pool) pool->GiveBack({data, capacity});
}

MemoryBlock::MemoryBlock(MemoryBlock&& other) noexcept
    : pool(std::move(other.pool)),
      data(std::exchange(other.data, nullptr)),
      capacity(std::exchange(other.capacity, 0)) {}

MemoryBlock& MemoryBlock::operator=(MemoryBlock&& other) noexcept {
    std::swap(pool, other.pool);
    std::swap(data, other.data);
    std::swap(capacity, other.capacity);
    return *this;
}

std::shared_ptr<MemoryPool> MemoryPool::Create(MemoryLimits const& limits) {
    return std::shared_ptr<MemoryPool>(new MemoryPool(limits));
}

MemoryPool::MemoryPool(MemoryLimits const& poolLimits) : limits(poolLimits) {
    pooled.reserve(limits.pooledBlocks); // So that a block can come back without an allocation.
}

MemoryPool::~MemoryPool() { FreeAll(); }

void MemoryPool::FreeToSystem(Piece piece) { ::operator delete(piece.data, AlignmentOf(piece.bytes)); }

MemoryBlock MemoryPool::Allocate(std::uint64_t bytes) {
    if (bytes > MAX_BYTES) throw std::bad_alloc();
    std::uint64_t const needed = std::max<std::uint64_t>(bytes, 1);
    Piece piece = TakeFitting(needed);
    if (piece.data == nullptr) {
        try {
            piece = {AllocateFromSystem(needed), needed};
        } catch (std::bad_alloc const&) {
            Release();
            piece = {AllocateFromSystem(needed), needed};
        }
    }
    std::uint64_t seed = 0;
    {
        std::lock_guard const lock(mutex);
        usedBytes += piece.bytes;
        seed = ++fillSeed;
    }
    if (limits.fillNew) FillWithPattern(piece.data, piece.bytes, seed);
    return {shared_from_this(), piece.data, piece.bytes};
}

MemoryPool::Piece MemoryPool::TakeFitting(std::uint64_t bytes) {
    std::lock_guard const lock(mutex);
    // The tightest fit, of equals the one used last, whose lines are in the cache. More than a quarter too large is
    // left for the picture that it fits. Alignment follows from the size, so it must be right for the size asked for.
    auto best = pooled.end();
    for (auto at = pooled.begin(); at != pooled.end(); ++at) {
        bool const fits = at->bytes >= bytes && at->bytes - bytes <= bytes / 4;
        if (fits && (best == pooled.end() || at->bytes <= best->bytes)) best = at;
    }
    if (best == pooled.end()) return {nullptr, 0};
    Piece const piece = *best;
    pooled.erase(best);
    pooledBytes -= piece.bytes;
    return piece;
}

/// Keeps the piece when there is room; otherwise returns what has to go before.
MemoryPool::Piece MemoryPool::KeepOrTakeOldest(Piece piece) noexcept {
    std::lock_guard const lock(mutex);
    if (pooled.size() == limits.pooledBlocks || pooledBytes + piece.bytes > limits.pooledBytes) return TakeOldest();
    pooled.push_back(piece);
    pooledBytes += piece.bytes;
    return {nullptr, 0};
}

void MemoryPool::GiveBack(Piece piece) noexcept {
    {
        std::lock_guard const lock(mutex);
        usedBytes -= piece.bytes;
    }
    bool const isKept = piece.bytes >= MIN_POOLED && piece.bytes <= limits.pooledBytes && limits.pooledBlocks > 0;
    if (!isKept) return FreeToSystem(piece);
    // Unmapping a large block takes milliseconds: not under the lock.
    for (Piece oldest = KeepOrTakeOldest(piece); oldest.data != nullptr; oldest = KeepOrTakeOldest(piece))
        FreeToSystem(oldest);
}

/// The caller holds the lock.
MemoryPool::Piece MemoryPool::TakeOldest() {
    if (pooled.empty()) return {nullptr, 0};
    Piece const oldest = pooled.front();
    pooled.erase(pooled.begin());
    pooledBytes -= oldest.bytes;
    return oldest;
}

void MemoryPool::FreeAll() {
    for (;;) {
        Piece oldest{};
        {
            std::lock_guard const lock(mutex);
            oldest = TakeOldest();
        }
        if (oldest.data == nullptr) break;
        FreeToSystem(oldest);
    }
}

void MemoryPool::Release() {
    FreeAll();
#ifdef __GLIBC__
    malloc_trim(0); // What was freed on the heap stays with the process otherwise.
#endif
}

std::uint64_t MemoryPool::GetUsed() const {
    std::lock_guard const lock(mutex);
    return usedBytes;
}

std::uint64_t MemoryPool::GetPooled() const {
    std::lock_guard const lock(mutex);
    return pooledBytes;
}

} // namespace Velnor::Proc
