#include "Proc/Interfaces/Plane.h"
#include "Proc/Interfaces/ProcException.h"

#include <gtest/gtest.h>

#include <cstring>
#include <numeric>
#include <vector>

namespace Velnor::Proc {
namespace {

using Bytes = std::vector<unsigned char>;

Bytes Counting(std::size_t size) {
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
    return bytes;
}

TEST(Plane, HoldsAddressStrideWidthAndRowsInThisOrder) {
    unsigned char sample = 0;
    ConstPlane const plane(&sample, -7, 3, 2);
    std::uint64_t words[4];
    static_assert(sizeof(ConstPlane) >= sizeof words);
    std::memcpy(words, static_cast<void const*>(&plane), sizeof words);
    EXPECT_EQ(words[0], reinterpret_cast<std::uintptr_t>(&sample));
    EXPECT_EQ(static_cast<std::int64_t>(words[1]), -7);
    EXPECT_EQ(words[2], 3U);
    EXPECT_EQ(words[3], 2U);
    EXPECT_TRUE(ConstPlane().IsEmpty());
    EXPECT_TRUE(ConstPlane(&sample, 1, 0, 5).IsEmpty());
    EXPECT_FALSE(plane.IsEmpty());
}

TEST(Plane, SamplesAreFoundByStrideAndSampleSize) {
    Bytes bytes = Counting(60);
    MutablePlane const plane(bytes.data() + 10, 16, 12, 3, 3);
    EXPECT_EQ(*plane.GetOffsetPtr(0, 0), 10);
    EXPECT_EQ(*plane.GetOffsetPtr(2, 1), 10 + 16 + 6);
    EXPECT_EQ(*plane.GetRow(2), 42);
    ConstPlane const reading = plane;
    EXPECT_EQ(*reading.GetOffsetPtr(3, 2), 10 + 32 + 9);
    *plane.GetOffsetPtr(1, 0) = 200;
    EXPECT_EQ(bytes[13], 200);
}

TEST(Plane, BottomUpAndNegativeStridesWalkBackwards) {
    Bytes const bytes = Counting(40);
    ConstPlane const upsideDown(bytes.data(), 10, 6, 4, 2, true);
    EXPECT_EQ(upsideDown.GetStride(), -10);
    EXPECT_EQ(*upsideDown.GetRow(0), 30);
    EXPECT_EQ(*upsideDown.GetOffsetPtr(1, 3), 2);
    ConstPlane const negative(bytes.data() + 30, -10, 6, 4, 2);
    EXPECT_EQ(negative.GetRow(3), upsideDown.GetRow(3));
    ConstPlane const upright(bytes.data() + 30, -10, 6, 4, 2, true);
    EXPECT_EQ(*upright.GetRow(0), 0);
    EXPECT_EQ(*upright.GetRow(3), 30);
    EXPECT_TRUE(ConstPlane(bytes.data(), 10, 6, 0, 2, true).IsEmpty());
}

TEST(Plane, SubplaneTakesWholeSamplesUnderARectangle) {
    Bytes bytes = Counting(200);
    MutablePlane const packed(bytes.data(), 20, 18, 10, 3);
    MutablePlane const part = packed.MakeSubplane(2, 3, 3, 4, 3, 0, 0);
    EXPECT_EQ(part.GetData(), bytes.data() + 3 * 20 + 2 * 3);
    EXPECT_EQ(part.GetWidth(), 9U);
    EXPECT_EQ(part.GetHeight(), 4U);
    EXPECT_EQ(*part.GetOffsetPtr(1, 1), 4 * 20 + 9);
    MutablePlane const inner = part.MakeSubplane(1, 1, 1, 1, 3, 0, 0);
    EXPECT_EQ(inner.GetData(), packed.GetOffsetPtr(3, 4));

    // Interleaved chroma, one sample of 2 bytes for 2 x 4 pixels: sizes round up, the corner lies on a sample.
    ConstPlane const chroma(bytes.data() + 180, -20, 20, 10, 2);
    ConstPlane const odd = chroma.MakeSubplane(4, 8, 5, 5, 2, 1, 2);
    EXPECT_EQ(odd.GetData(), chroma.GetOffsetPtr(2, 2));
    EXPECT_EQ(odd.GetStride(), -20);
    EXPECT_EQ(odd.GetWidth(), 6U);
    EXPECT_EQ(odd.GetHeight(), 2U);
    EXPECT_EQ(odd.GetSampleBytes(), 2U);
}

TEST(Plane, CopyWritesRowsAndNothingBetweenThem) {
    Bytes const source = Counting(40);
    for (std::int64_t stride : {9, -9}) {
        Bytes target(40, 0xee);
        unsigned char* const first = target.data() + (stride > 0 ? 2 : 2 + 27);
        CopyPlane(ConstPlane(source.data(), 10, 5, 4), MutablePlane(first, stride, 5, 4));
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 5; ++x) EXPECT_EQ(first[y * stride + x], 10 * y + x);
        EXPECT_EQ(std::count(target.begin(), target.end(), 0xee), 20);
    }
    CopyPlane(ConstPlane(), MutablePlane());
}

TEST(Plane, CopyOfUnlikeSizesNamesBothAndWritesNothing) {
    Bytes const source = Counting(40);
    Bytes target(40, 7);
    try {
        CopyPlane(ConstPlane(source.data(), 10, 5, 4), MutablePlane(target.data(), 10, 6, 4));
        FAIL();
    } catch (ProcException const& error) {
        EXPECT_EQ(DescribeException(error), "Planes to copy differ in size: 5 bytes x 4 rows into 6 bytes x 4 rows.");
    }
    EXPECT_THROW(CopyPlane(ConstPlane(source.data(), 10, 5, 4), MutablePlane(target.data(), 10, 5, 3)), ProcException);
    EXPECT_EQ(target, Bytes(40, 7));
}

} // namespace
} // namespace Velnor::Proc
