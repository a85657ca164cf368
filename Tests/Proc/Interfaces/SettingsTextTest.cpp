#include "Proc/Interfaces/SettingsText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace Velnor::Proc {

enum class Shape { Round, Square, Odd };

template <>
struct EnumNames<Shape> {
    static constexpr std::array<EnumName<Shape>, 2> VALUES{{{Shape::Round, "round"}, {Shape::Square, "square"}}};
};

namespace {

template <class Value>
void ExpectRoundTrip(std::initializer_list<Value> values) {
    for (Value const& value : values) {
        std::string const text = TextForm<Value>::Print(value);
        EXPECT_TRUE(TextForm<Value>::Parse(text) == value) << text;
    }
}

template <class Value>
std::string Refusal(std::string_view text) {
    try {
        TextForm<Value>::Parse(text);
    } catch (SettingsTextException const& error) {
        return DescribeException(error);
    }
    return "taken";
}

TEST(SettingsText, WhatIsPrintedReadsBackAsTheSame) {
    ExpectRoundTrip<bool>({true, false});
    ExpectRoundTrip<int>({0, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()});
    ExpectRoundTrip<unsigned char>({0, 255});
    ExpectRoundTrip<std::int64_t>({INT64_MIN, INT64_MAX});
    ExpectRoundTrip<double>({0.0, 0.1, -1.0 / 3.0, 1e-300, 1.7976931348623157e308, 5e-324});
    ExpectRoundTrip<float>({0.0F, 0.1F, 1.0F / 3.0F, std::numeric_limits<float>::max()});
    ExpectRoundTrip<std::string>({"", "two words, one comma"});
    ExpectRoundTrip<Color>({Color(), Color(1, 2, 3, 4), Color(255, 0, 16, 255), Color(0, 0, 0, 0)});
    ExpectRoundTrip<FrameFormat>(
        {{}, {640, 480, 1, 1}, {640, 480, 4, 3}, {640, 480, 2, 2}, {0, 0, 1, 1}, {7, 0, 1, 1}});
    ExpectRoundTrip<CropInfo>({CropInfo(), CropInfo(1, 2, 3, 4)});
    ExpectRoundTrip<Shape>({Shape::Round, Shape::Square});
    ExpectRoundTrip<std::vector<PixFmt>>({{}, {PixFmt::RGB24}, {PixFmt::YUVJ411P, PixFmt::NONE}});
    ExpectRoundTrip<std::vector<std::string>>({{"", "a"}, {"a", ""}, {"", "", ""}});
    for (PixFmtDescription const& format : PixFmtDescription::GetAll()) ExpectRoundTrip<PixFmt>({format.format});
    EXPECT_EQ(TextForm<float>::Print(0.1F), "0.1");
}

TEST(SettingsText, OtherSpellingsOfTheSameValue) {
    for (char const* yes : {"true", "yes", "on", "1"}) EXPECT_TRUE(TextForm<bool>::Parse(yes));
    for (char const* no : {"false", "no", "off", "0"}) EXPECT_FALSE(TextForm<bool>::Parse(no));
    EXPECT_EQ(TextForm<Color>::Parse("red"), Color(0, 0, 255, 255));
    EXPECT_EQ(TextForm<Color>::Parse("transparent"), Color(0, 0, 0, 0));
    EXPECT_EQ(TextForm<Color>::Parse("#C8b496"), Color(0x96, 0xb4, 0xc8, 255));
    EXPECT_EQ(TextForm<Color>::Parse("#1af"), Color(0xff, 0xaa, 0x11, 255));
    EXPECT_EQ(TextForm<Color>::Parse("#01020304"), Color(3, 2, 1, 4));
    EXPECT_EQ(TextForm<Color>::Parse("#1af8"), Color(0xff, 0xaa, 0x11, 0x88));
    for (char const* text :
         {"rgb(200,180,150)", "RGB(200 180 150)", "rgba(200, 180, 150, 1)", "rgb(200 180 150 / 100%)"})
        EXPECT_EQ(TextForm<Color>::Parse(text), Color(150, 180, 200, 255)) << text;
    EXPECT_EQ(TextForm<Color>::Parse("rgb(100%,0%,20%,0.5)"), Color(51, 0, 255, 128));
    EXPECT_EQ(TextForm<Color>::Parse("RebeccaPurple"), Color(0x99, 0x33, 0x66, 255));
    EXPECT_EQ(TextForm<Color>::Parse("aliceblue"), Color(0xff, 0xf8, 0xf0, 255));
    EXPECT_EQ(TextForm<Color>::Parse("yellowgreen"), Color(0x32, 0xcd, 0x9a, 255));
    EXPECT_EQ(TextForm<FrameFormat>::Parse("640x480"), FrameFormat::Square(640, 480));
    EXPECT_EQ(TextForm<double>::Parse("-1.5e2"), -150.0);
}

TEST(SettingsText, TextsThatMakeNoValueAreNamed) {
    EXPECT_EQ(Refusal<bool>("maybe"), "\"maybe\" is none of true, false");
    EXPECT_EQ(Refusal<Shape>("Round"), "\"Round\" is none of round, square");
    EXPECT_EQ(Refusal<int>("3.5"), "\"3.5\" is no whole number");
    EXPECT_EQ(Refusal<int>(""), "\"\" is no whole number");
    EXPECT_EQ(Refusal<int>("99999999999999999999"),
              "99999999999999999999 is outside the range -2147483648 to 2147483647");
    EXPECT_EQ(Refusal<unsigned char>("256"), "256 is outside the range 0 to 255");
    EXPECT_EQ(Refusal<unsigned int>("-1"), "-1 is outside the range 0 to 4294967295");
    for (char const* text : {"", "x", "1x", "nan", "inf", "-inf", "1e999", "0x10", " 1"})
        EXPECT_EQ(Refusal<double>(text), "\"" + std::string(text) + "\" is no number");
    EXPECT_NE(Refusal<float>("1e300"), "taken");
    for (char const* text : {"", "#", "#12", "#12345", "#1234567", "#123456789", "#gggggg", "#-12345", "123456", "rot"})
        EXPECT_EQ(Refusal<Color>(text),
                  "\"" + std::string(text) +
                      "\" is no colour: #rrggbb, #rrggbbaa, #rgb, rgb(200,180,150) or a name such as white is "
                      "accepted");
    for (char const* text : {"", "640", "640x", "x480", "640x480x", "640x480x1", "640x480x1:0", "640x480x1:1:1",
                             "640x480x1:1x", "-1x2", "9999999x1"})
        EXPECT_NE(Refusal<FrameFormat>(text), "taken") << text;
    for (char const* text : {"", "1,2,3", "1,2,3,", "1,2,3,4,", "1,2,3,4,5", "1,2,3,-4"})
        EXPECT_NE(Refusal<CropInfo>(text), "taken") << text;
    EXPECT_EQ(Refusal<PixFmt>("rgb"), "\"rgb\" is no pixel format such as rgb24, bgra or yuv420p");
    EXPECT_NE(Refusal<std::vector<PixFmt>>("rgb24,"), "taken");
    EXPECT_NE(Refusal<std::vector<int>>(",1"), "taken");
}

} // namespace
} // namespace Velnor::Proc
