#include "Proc/Interfaces/Color.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace Velnor::Proc {
namespace {

TEST(Color, KeepsBlueGreenRedOpacityAndPacksByTheLetters) {
    constexpr Color COLOR(1, 2, 3, 4);
    EXPECT_EQ(COLOR[0], 1);
    EXPECT_EQ(COLOR.GetBlue(), 1);
    EXPECT_EQ(COLOR.GetGreen(), 2);
    EXPECT_EQ(COLOR.GetRed(), 3);
    EXPECT_EQ(COLOR.GetOpacity(), 4);
    EXPECT_EQ(COLOR.bgra(), 0x04030201U);
    EXPECT_EQ(COLOR.rgba(), 0x04010203U);
    EXPECT_EQ(COLOR.argb(), 0x01020304U);
    EXPECT_EQ(COLOR.abgr(), 0x03020104U);
    for (unsigned int word : {0U, 0x01020304U, 0xfffefdfcU, 0x80c0ff01U}) {
        EXPECT_EQ(Color::FromRGBA(word).rgba(), word);
        EXPECT_EQ(Color::FromBGRA(word).bgra(), word);
        EXPECT_EQ(Color::FromARGB(word).argb(), word);
        EXPECT_EQ(Color::FromABGR(word).abgr(), word);
    }
    EXPECT_EQ(Color::FromARGB(0x01020304U), COLOR);
}

TEST(Color, ConstantsAndEqualityHeedTheOpacity) {
    EXPECT_EQ(Color(), Color::Black(Color::Opacity::Opaque));
    EXPECT_EQ(Color::White(Color::Opacity::Transparent), Color(255, 255, 255, 0));
    EXPECT_NE(Color::Black(Color::Opacity::Opaque), Color::Black(Color::Opacity::Transparent));
}

TEST(Color, LumaAndChromaAreFullRangeToTheNearestLevel) {
    auto const level = [](double value) { return std::clamp(std::floor(value + 0.5), 0.0, 255.0); };
    for (int blue = 0; blue < 256; blue += 5)
        for (int green = 0; green < 256; green += 5)
            for (int red = 0; red < 256; red += 5) {
                Color const color(static_cast<unsigned char>(blue), static_cast<unsigned char>(green),
                                  static_cast<unsigned char>(red), 0);
                double const luma = (299.0 * red + 587.0 * green + 114.0 * blue) / 1000.0;
                ASSERT_EQ(color.y(), level(luma)) << red << " " << green << " " << blue;
                // The definition by differences, apart from exact halves, which either form may round its own way.
                ASSERT_NEAR(color.u(), std::min(128.0 + (blue - luma) / 1.772, 255.0), 0.5 + 1e-9);
                ASSERT_NEAR(color.v(), std::min(128.0 + (red - luma) / 1.402, 255.0), 0.5 + 1e-9);
            }
    for (int grey = 0; grey < 256; ++grey) {
        auto const byte = static_cast<unsigned char>(grey);
        Color const color(byte, byte, byte, 255);
        EXPECT_EQ(color.y(), grey);
        EXPECT_EQ(color.u(), 128);
        EXPECT_EQ(color.v(), 128);
    }
    EXPECT_EQ(Color(255, 0, 0, 255).u(), 255); // 255.5 does not fit
    EXPECT_EQ(Color(0, 0, 255, 255).v(), 255);
}

} // namespace
} // namespace Velnor::Proc
