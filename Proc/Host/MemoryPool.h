#pragma once

#include "Core/Export.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Velnor::Proc {

class MemoryPool;

/// A piece of a pool's memory. Goes back to the pool at its end, and keeps the pool alive until then.
class VELNOR_API MemoryBlock {
public:
    MemoryBlock() = default;
    MemoryBlock(std::shared_ptr<MemoryPool> origin, unsigned char* memory, std::uint64_t bytes);
    ~MemoryBlock();
    MemoryBlock(MemoryBlock&& other) noexcept;
    MemoryBlock& operator=(MemoryBlock&& other) noexcept;

    MemoryPool const* GetPool() const { return pool.get(); } ///< Null when there is no memory.
    unsigned char* GetData() const { return data; }
    std::uint64_t GetCapacity() const { return capacity; } ///< Bytes; at least what was asked for.

private:
    std::shared_ptr<MemoryPool> pool;
    unsigned char* data = nullptr;
    std::uint64_t capacity = 0;
};

/// What a pool keeps, and how it hands out.
struct VELNOR_API MemoryLimits {
    /// Five pictures of 24 megapixels in RGBA, or about what one effect and its sub-effects hold at a time.
    std::uint64_t pooledBytes = std::uint64_t{512} << 20;
    /// Few enough to be searched from end to end.
    std::size_t pooledBlocks = 64;
    /// Writes a pattern, another one each time, over what is handed out: a sample that nobody wrote shows.
    bool fillNew = FILL_NEW_BY_DEFAULT;
    /// Where set, the rows of pictures lie between bytes of a pattern, and this is told of those that were written to,
    /// when the samples come back. For tests: whoever writes past a row hits nothing that is seen otherwise.
    void (*onOverrun)(std::string const& what) = nullptr;

    static bool const FILL_NEW_BY_DEFAULT;
};

/// Memory for samples. Pages that are new to the process are the dear part of a picture: copying 24 megapixels into
/// them takes five times the copy. So blocks are kept for the next picture, which in a chain of effects mostly has the
/// size of the last, and large blocks ask for huge pages. Thread-safe.
class VELNOR_API MemoryPool : public std::enable_shared_from_this<MemoryPool> {
public:
    static std::shared_ptr<MemoryPool> Create(MemoryLimits const& limits = MemoryLimits());
    ~MemoryPool();
    MemoryPool(MemoryPool const&) = delete;
    MemoryPool& operator=(MemoryPool const&) = delete;

    /// A block of at least `bytes`, on a 64-byte boundary (from 2 MiB on: on a 2 MiB boundary), its content
    /// unspecified. Throws std::bad_alloc when there is no memory, and above MAX_BYTES.
    MemoryBlock Allocate(std::uint64_t bytes);

    MemoryLimits const& GetLimits() const { return limits; }

    void Release(); ///< Gives the pooled blocks back to the system.

    std::uint64_t GetUsed() const;   ///< Bytes of the blocks handed out.
    std::uint64_t GetPooled() const; ///< Bytes of the blocks kept.

    static constexpr std::uint64_t ALIGNMENT = 64; ///< A cache line, and the widest vector register.
    static constexpr std::uint64_t HUGE_PAGE = std::uint64_t{2} << 20;
    static constexpr std::uint64_t MAX_BYTES = std::uint64_t{1} << 36;
    /// Smaller blocks are not kept: the system's allocator has them at hand itself.
    static constexpr std::uint64_t MIN_POOLED = std::uint64_t{32} << 10;

private:
    friend class MemoryBlock;

    struct Piece {
        unsigned char* data;
        std::uint64_t bytes;
    };

    explicit MemoryPool(MemoryLimits const& poolLimits);
    static void FreeToSystem(Piece piece);
    Piece TakeFitting(std::uint64_t bytes);
    Piece TakeOldest();
    void FreeAll();
    Piece KeepOrTakeOldest(Piece piece) noexcept;
    void GiveBack(Piece piece) noexcept;

    MemoryLimits const limits;
    mutable std::mutex mutex;
    std::vector<Piece> pooled; ///< Least recently used first.
    std::uint64_t pooledBytes = 0;
    std::uint64_t usedBytes = 0;
    std::uint64_t fillSeed = 0;
};

} // namespace Velnor::Proc
