#include "Proc/Host/MemoryPool.h"

#include "Proc/Host/Context.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace Velnor::Proc {
namespace {

constexpr std::uint64_t KIB = 1024;
constexpr std::uint64_t MIB = 1024 * KIB;

MemoryLimits Limits(std::uint64_t bytes, std::size_t blocks) { return {bytes, blocks, false}; }

bool IsAligned(MemoryBlock const& block, std::uint64_t boundary) {
    return reinterpret_cast<std::uintptr_t>(block.GetData()) % boundary == 0;
}

TEST(MemoryPool, HandsTheSameMemoryOutAgain) {
    auto const pool = MemoryPool::Create();
    MemoryBlock block = pool->Allocate(3 * MIB);
    unsigned char* const first = block.GetData();
    EXPECT_EQ(pool->GetUsed(), 3 * MIB);
    block = MemoryBlock();
    EXPECT_EQ(pool->GetUsed(), 0U);
    EXPECT_EQ(pool->GetPooled(), 3 * MIB);

    block = pool->Allocate(3 * MIB - 100);
    EXPECT_EQ(block.GetData(), first);
    EXPECT_EQ(pool->GetPooled(), 0U);
    block = MemoryBlock();

    // A picture half the size does not take what the next large one will need.
    block = pool->Allocate(MIB);
    EXPECT_NE(block.GetData(), first);
    EXPECT_EQ(pool->GetPooled(), 3 * MIB);

    pool->Release();
    EXPECT_EQ(pool->GetPooled(), 0U);
    EXPECT_EQ(pool->GetUsed(), MIB);
}

TEST(MemoryPool, TakesTheTightestFit) {
    auto const pool = MemoryPool::Create();
    std::vector<MemoryBlock> blocks;
    for (std::uint64_t size : {110U, 101U, 120U}) blocks.push_back(pool->Allocate(size * KIB));
    unsigned char* const tightest = blocks[1].GetData();
    blocks.clear();
    EXPECT_EQ(pool->Allocate(100 * KIB).GetData(), tightest);
}

TEST(MemoryPool, KeepsNoMoreThanItsLimits) {
    auto const byBytes = MemoryPool::Create(Limits(MIB, 100));
    std::vector<MemoryBlock> blocks;
    for (std::uint64_t i = 0; i < 8; ++i) blocks.push_back(byBytes->Allocate((300 + 100 * i) * KIB));
    unsigned char* const last = blocks[3].GetData(); // 600 KiB
    blocks.resize(4);
    for (MemoryBlock& block : blocks) {
        block = MemoryBlock();
        EXPECT_LE(byBytes->GetPooled(), MIB);
    }
    EXPECT_EQ(byBytes->GetPooled(), 600 * KIB) << "the older ones go first";
    EXPECT_EQ(byBytes->Allocate(600 * KIB).GetData(), last);
    byBytes->Allocate(2 * MIB);
    EXPECT_EQ(byBytes->GetPooled(), 600 * KIB) << "a block that can never be kept drives nobody out";

    auto const byCount = MemoryPool::Create(Limits(100 * MIB, 2));
    blocks.clear();
    for (int i = 0; i < 5; ++i) blocks.push_back(byCount->Allocate(64 * KIB));
    blocks.clear();
    EXPECT_EQ(byCount->GetPooled(), 128 * KIB);

    auto const none = MemoryPool::Create(Limits(0, 0));
    none->Allocate(MIB);
    EXPECT_EQ(none->GetPooled(), 0U);
    EXPECT_EQ(none->GetUsed(), 0U);
}

TEST(MemoryPool, AlignsForVectorsAndForHugePages) {
    auto const pool = MemoryPool::Create();
    for (std::uint64_t bytes : {std::uint64_t{0}, std::uint64_t{1}, 100 * KIB, 2 * MIB - 1})
        EXPECT_TRUE(IsAligned(pool->Allocate(bytes), 64)) << bytes;
    for (std::uint64_t bytes : {2 * MIB, 5 * MIB + 1}) EXPECT_TRUE(IsAligned(pool->Allocate(bytes), 2 * MIB)) << bytes;
}

TEST(MemoryPool, RefusesWhatNoSystemHas) {
    auto const pool = MemoryPool::Create();
    EXPECT_THROW(pool->Allocate(MemoryPool::MAX_BYTES + 1), std::bad_alloc);
    EXPECT_THROW(pool->Allocate(~std::uint64_t{0}), std::bad_alloc);
    EXPECT_EQ(pool->GetUsed(), 0U);
}

TEST(MemoryPool, BlocksOutliveThePoolsHandle) {
    auto pool = MemoryPool::Create();
    MemoryBlock block = pool->Allocate(MIB);
    pool.reset();
    std::memset(block.GetData(), 1, block.GetCapacity());
}

TEST(MemoryPool, FillsWithAnotherPatternEachTime) {
    auto const pool = MemoryPool::Create({MIB, 4, true});
    auto const content = [&] {
        MemoryBlock const block = pool->Allocate(100 * KIB + 5);
        return std::vector<unsigned char>(block.GetData(), block.GetData() + block.GetCapacity());
    };
    std::vector<unsigned char> const first = content();
    std::vector<unsigned char> const second = content();
    std::size_t equal = 0;
    for (std::size_t i = 0; i < first.size(); ++i) equal += first[i] == second[i] ? 1 : 0;
    EXPECT_LT(equal, first.size() / 10);
    EXPECT_GT(std::set<unsigned char>(first.begin(), first.end()).size(), 100U);
}

TEST(MemoryPool, ServesManyThreads) {
    auto const pool = MemoryPool::Create(Limits(MIB, 3));
    std::vector<std::thread> threads;
    for (unsigned char id = 1; id <= 4; ++id)
        threads.emplace_back([&pool, id] {
            for (std::uint64_t i = 0; i < 300; ++i) {
                MemoryBlock const block = pool->Allocate((64 + i % 7 * 40) * KIB);
                std::memset(block.GetData(), id, block.GetCapacity());
                EXPECT_EQ(std::memcmp(block.GetData(), block.GetData() + 1, block.GetCapacity() - 1), 0);
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(pool->GetUsed(), 0U);
    EXPECT_LE(pool->GetPooled(), MIB);
}

TEST(MemoryPool, TellsOfBytesThatWereWrittenBetweenRows) {
    static std::string told;
    MemoryLimits limits;
    limits.onOverrun = [](std::string const& what) { told += what; };
    auto const write = [&](std::uint64_t row, std::int64_t from, std::int64_t bytes) {
        told.clear();
        VideoHandle const picture = MakeShared<Context>(limits)->CreateImage(PixFmt::RGB24, FrameFormat::Square(64, 6));
        std::fill_n(picture->GetMutablePlane(0).GetRow(row) + from, bytes, static_cast<unsigned char>(7));
    };
    write(0, 0, 192);
    EXPECT_EQ(told, "");
    write(3, 190, 2 + 5);
    EXPECT_EQ(told, "A picture was written to after row 3 of plane 0, 192 bytes x 6 rows.");
    write(0, -1, 1);
    EXPECT_EQ(told, "A picture was written to before the first row.");
}

} // namespace
} // namespace Velnor::Proc
