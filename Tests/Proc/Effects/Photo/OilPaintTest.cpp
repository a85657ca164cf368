#include "Proc/Settings/SettingsEffectOilPaint.h"
#include "Tests/Proc/Effects/Photo/PhotoEffectTest.h"

#include <gmock/gmock.h>

#include <limits>

namespace Velnor::Proc {
namespace {

using namespace Testing;
using ::testing::HasSubstr;
using S = SettingsEffectOilPaint;

S Radius(double radius) {
    S settings;
    settings.SetRadius(radius);
    return settings;
}

class MagickOilPaintTest : public PhotoEffectTest<S> {
protected:
    /// A picture of any size in little memory: all of its rows are one.
    VideoHandle MakeLarge(std::uint32_t width, std::uint32_t height) {
        line.assign(width, 77);
        VideoHandle result;
        context.WrapImage(&result, PixFmt::GRAY8, FrameFormat::Square(width, height),
                          {ConstPlane(line.data(), 0, width, height)}, nullptr);
        return result;
    }
    std::vector<unsigned char> line;
};

TEST_F(MagickOilPaintTest, EveryPixelTakesAColourOfItsNeighbourhoodExactly) {
    VideoHandle const source = MakeNoise(context, PixFmt::RGB24, 31, 17);
    VideoHandle const result = Apply(Radius(2), source->MakeCopy(CopyMode::Value));
    int moved = 0;
    for (int y = 0; y < 17; ++y)
        for (int x = 0; x < 31; ++x) {
            auto const pixel = [](IDataVideo const& picture, int px, int py) {
                return ReadColour(picture, static_cast<std::uint32_t>(px), static_cast<std::uint32_t>(py));
            };
            Colour4 const painted = pixel(*result, x, y);
            bool isFound = false;
            for (int v = std::max(0, y - 2); v <= std::min(16, y + 2); ++v)
                for (int u = std::max(0, x - 2); u <= std::min(30, x + 2); ++u)
                    isFound = isFound || pixel(*source, u, v) == painted;
            ASSERT_TRUE(isFound) << x << ", " << y;
            moved += painted == pixel(*source, x, y) ? 0 : 1;
        }
    EXPECT_GT(moved, 31 * 17 / 2);
}

TEST_F(MagickOilPaintTest, PaintsEveryOrderOfBytesAlikeAndLeavesAlpha) {
    auto const colourAt = [](std::uint32_t x, std::uint32_t y) {
        return Colour4{double(x * 37 % 256), double(y * 53 % 256), double(x * y % 256), 1 + double((x + 3 * y) % 255)};
    };
    VideoHandle const reference = Apply(Radius(3), Paint(context, PixFmt::RGB24, 21, 13, colourAt));
    for (PixFmt const format : {PixFmt::BGR24, PixFmt::RGBA, PixFmt::BGRA, PixFmt::ARGB, PixFmt::GBRAP}) {
        VideoHandle const source = Paint(context, format, 21, 13, colourAt);
        VideoHandle const result = Apply(Radius(3), source);
        ASSERT_EQ(result->GetPixFmt(), format);
        for (std::uint32_t y = 0; y < 13; ++y)
            for (std::uint32_t x = 0; x < 21; ++x) {
                Colour4 wanted = ReadColour(*reference, x, y);
                if (result->HasAlpha()) wanted.alpha = colourAt(x, y).alpha;
                ASSERT_EQ(ReadColour(*result, x, y), wanted) << static_cast<int>(format) << ": " << x << ", " << y;
            }
    }
}

TEST_F(MagickOilPaintTest, ReadsRowsInAnyOrderAndNoByteBeyondThem) {
    VideoHandle const source = MakeNoise(context, PixFmt::BGR24, 19, 11);
    std::vector<unsigned char> const wanted = Samples(*Apply(Radius(2), source->MakeCopy(CopyMode::Value)));
    for (bool const isBottomUp : {false, true}) {
        FencedPicture const fenced(*source, isBottomUp);
        EXPECT_EQ(Samples(*Apply(Radius(2), fenced.Wrap(context))), wanted);
    }
}

TEST_F(MagickOilPaintTest, NamesTheLimitOfTheLibraryAndWorksOnTheNextPicture) {
    EXPECT_THAT(Refusal(Radius(1), MakeLarge(60000, 1)),
                ::testing::AllOf(HasSubstr("width of 60000 pixels"), HasSubstr("limit"), HasSubstr("ImageMagick")));
    EXPECT_THAT(Refusal(Radius(1), MakeLarge(1, 60000)), HasSubstr("height of 60000 pixels"));
    EXPECT_THAT(Refusal(Radius(1), MakeLarge(15999, 15999)), HasSubstr("area of 255968001 pixels"));
    EXPECT_THAT(Refusal(Radius(1), MakeLarge(11000, 11000)), HasSubstr("2 times 968000000 bytes"));
    try {
        Apply(Radius(1), MakeLarge(60000, 1));
        ADD_FAILURE() << "accepted";
    } catch (ProcException const& error) {
        TranscodingErrors const* const code = boost::get_error_info<TagTranscodingErrorCode>(error);
        ASSERT_NE(code, nullptr);
        EXPECT_EQ(*code, TranscodingErrors::OverLimit);
    }
    VideoHandle const flat = MakeFlat(context, PixFmt::RGB24, 9, 5, {10, 200, 77});
    std::vector<unsigned char> const before = Samples(*flat);
    EXPECT_EQ(Samples(*Apply(Radius(1), flat)), before);
}

TEST_F(MagickOilPaintTest, RefusesARadiusWithoutAMeaning) {
    VideoHandle const picture = MakeNoise(context, PixFmt::RGB24, 9, 5);
    EXPECT_THAT(Refusal(Radius(1234), picture), "The setting radius is 1234 pixels; 0 to 200 are accepted.");
    EXPECT_THAT(Refusal(Radius(std::numeric_limits<double>::quiet_NaN()), picture), HasSubstr("nan"));
    EXPECT_EQ(Refusal(Radius(-1), picture), "");
    EXPECT_EQ(Samples(*picture), Samples(*MakeNoise(context, PixFmt::RGB24, 9, 5)));
}

} // namespace
} // namespace Velnor::Proc
