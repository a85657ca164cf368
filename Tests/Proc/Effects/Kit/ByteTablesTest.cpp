#include "Proc/Effects/Kit/ByteTables.h"

#include "Proc/Interfaces/ProcException.h"
#include "Tests/Support/Refusal.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace Velnor::Proc::Kernels {
namespace {

using Bytes = std::vector<unsigned char>;

Bytes Noise(std::size_t size, unsigned int seed) {
    std::minstd_rand random(seed);
    Bytes bytes(size);
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random() >> 7);
    return bytes;
}

/// Four tables that differ at every entry, so that a byte that met the wrong one is seen.
std::array<Table, 4> DifferentTables() {
    std::array<Table, 4> tables;
    for (std::size_t k = 0; k < 4; ++k)
        for (std::size_t i = 0; i < 256; ++i) tables[k][i] = static_cast<unsigned char>((i * 57 + 31) ^ (k * 85));
    return tables;
}

/// Three rows with bytes around and between them, at any alignment.
struct Rows {
    Rows(Bytes contents, std::uint64_t rowWidth, std::size_t offset, bool bottomUp)
        : bytes(std::move(contents)),
          plane(bytes.data() + offset, static_cast<std::int64_t>(rowWidth) + PADDING, rowWidth, COUNT, 1, bottomUp) {}

    static std::size_t GetSize(std::uint64_t rowWidth) { return COUNT * (rowWidth + PADDING) + 64; }

    static constexpr int PADDING = 5;
    static constexpr std::uint64_t COUNT = 3;
    Bytes bytes;
    MutablePlane plane;
};

class ByteTablesOn : public ::testing::TestWithParam<Target> {
protected:
    /// Compares with the scalar loop, over whole buffers: padding, row ends and surroundings included.
    void CheckRows(std::uint64_t width, unsigned int pixelBytes, std::size_t tablesCount, std::size_t offset) {
        std::span<Table const> const used(tables.data(), tablesCount);
        std::size_t const size = Rows::GetSize(width);
        Rows const source(Noise(size, 1), width, offset, width % 2 == 1);
        Rows expected(Noise(size, 2), width, offset / 2, width % 3 == 1);
        Rows fresh(Noise(size, 2), width, offset / 2, width % 3 == 1);
        MapBytesScalar(source.plane, expected.plane, used, pixelBytes);
        MapBytesWith(GetParam(), source.plane, fresh.plane, used, pixelBytes);
        ASSERT_EQ(fresh.bytes, expected.bytes);

        Rows sameByLoop(source.bytes, width, offset, false);
        Rows same(source.bytes, width, offset, false);
        MapBytesScalar(sameByLoop.plane, sameByLoop.plane, used, pixelBytes);
        MapBytesWith(GetParam(), same.plane, same.plane, used, pixelBytes);
        ASSERT_EQ(same.bytes, sameByLoop.bytes);
        ASSERT_EQ(source.bytes, Noise(size, 1));
    }

    std::array<Table, 4> tables = DifferentTables();
};

TEST_P(ByteTablesOn, GivesTheBytesOfTheScalarLoopAtEveryWidth) {
    for (unsigned int pixelBytes = 1; pixelBytes <= 4; ++pixelBytes)
        for (std::size_t tablesCount = 1; tablesCount <= pixelBytes; ++tablesCount)
            for (std::uint64_t width = 0; width <= 200; ++width) {
                SCOPED_TRACE(std::to_string(tablesCount) + " tables, " + std::to_string(pixelBytes) +
                             " bytes a pixel, rows of " + std::to_string(width));
                ASSERT_NO_FATAL_FAILURE(CheckRows(width, pixelBytes, tablesCount, width % 33));
            }
}

TEST_P(ByteTablesOn, GivesTheBytesOfTheScalarLoopInLongRows) {
    for (unsigned int pixelBytes = 1; pixelBytes <= 4; ++pixelBytes)
        for (std::uint64_t width : {256U, 383U, 384U, 511U, 512U, 1023U, 1025U})
            for (std::size_t offset : {0U, 1U, 32U, 63U})
                ASSERT_NO_FATAL_FAILURE(CheckRows(width, pixelBytes, pixelBytes, offset)) << width << " at " << offset;
}

TEST_P(ByteTablesOn, FindsEveryEntryOfEveryTable) {
    // Byte value i stands at every place of a pixel and, as the rows are longer than a block, in every lane.
    for (unsigned int pixelBytes = 1; pixelBytes <= 4; ++pixelBytes)
        for (std::size_t i = 0; i < 256; ++i) {
            Bytes row(pixelBytes * 80, static_cast<unsigned char>(i));
            MutablePlane const plane(row.data(), 0, row.size(), 1);
            MapBytesWith(GetParam(), plane, plane, std::span(tables).first(pixelBytes), pixelBytes);
            for (std::size_t b = 0; b < row.size(); ++b)
                ASSERT_EQ(row[b], tables[b % pixelBytes][i]) << "byte " << b << " was " << i;
        }
}

TEST_P(ByteTablesOn, OneTableForAllBytesStillLeavesThePartOfAPixel) {
    tables = {tables[2], tables[2], tables[2], tables[2]};
    for (unsigned int pixelBytes = 2; pixelBytes <= 4; ++pixelBytes)
        for (std::uint64_t width : {1U, 7U, 100U, 101U, 102U, 103U})
            ASSERT_NO_FATAL_FAILURE(CheckRows(width, pixelBytes, pixelBytes, 3)) << width;
}

INSTANTIATE_TEST_SUITE_P(Targets, ByteTablesOn, ::testing::ValuesIn(SupportedTargets()),
                         [](auto const& test) { return std::string(GetTargetName(test.param)); });

TEST(ByteTables, MapsByPlaceInThePixelAndKeepsTheRest) {
    std::array<Table, 3> tables{};
    tables[0][10] = 1;
    tables[1][10] = 2;
    tables[2][10] = 3;
    Bytes const source{10, 10, 10, 10, 0, 10, 0, 9, 10, 10, 0};
    Bytes target(source.size(), 77);
    ConstPlane const from(source.data(), 11, 11, 1);
    MapBytes(from, MutablePlane(target.data(), 11, 11, 1), tables, 4);
    EXPECT_EQ(target, (Bytes{1, 2, 3, 10, 0, 2, 0, 9, 77, 77, 77}));
    MapBytes(from, MutablePlane(target.data(), 11, 11, 1), tables, 3);
    EXPECT_EQ(target, (Bytes{1, 2, 3, 1, 0, 3, 0, 0, 3, 77, 77}));
}

TEST(ByteTables, RefusesWhatItCannotMapBeforeWriting) {
    auto const tables = DifferentTables();
    Bytes bytes(24, 9);
    MutablePlane const plane(bytes.data(), 12, 12, 2);
    auto const message = [&](MutablePlane const& target, std::size_t count, unsigned int pixelBytes) -> std::string {
        return Testing::RefusalOf([&] { MapBytes(plane, target, std::span(tables).first(count), pixelBytes); });
    };
    EXPECT_EQ(message(plane, 1, 0), "pixels of 0 bytes cannot be mapped: 1 to 4 can");
    EXPECT_EQ(message(plane, 1, 5), "pixels of 5 bytes cannot be mapped: 1 to 4 can");
    EXPECT_EQ(message(plane, 0, 3), "0 tables for a pixel of 3 bytes: give 1 to 3");
    EXPECT_EQ(message(plane, 4, 3), "4 tables for a pixel of 3 bytes: give 1 to 3");
    EXPECT_EQ(message(MutablePlane(bytes.data(), 12, 11, 2), 1, 1),
              "a plane of 12 bytes x 2 rows cannot be mapped to one of 11 x 2");
    EXPECT_EQ(message(MutablePlane(bytes.data(), 12, 12, 1), 1, 1),
              "a plane of 12 bytes x 2 rows cannot be mapped to one of 12 x 1");
    EXPECT_EQ(bytes, Bytes(24, 9));
}

} // namespace
} // namespace Velnor::Proc::Kernels
