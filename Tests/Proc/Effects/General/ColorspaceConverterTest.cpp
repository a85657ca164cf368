#include "Proc/Effects/General/FormatChoice.h"
#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Interfaces/ProcException.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Tests/Support/ColourPictures.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/Refusal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(ColorspaceConverter)
namespace {

using namespace Testing;

class ColorspaceConverterTest : public testing::Test {
protected:
    VideoHandle Convert(VideoHandle const& source, std::vector<PixFmt> const& accepted, bool keepExtras = true) {
        effect->SetSettings(SettingsColorspaceConverter(accepted, keepExtras));
        return boost::dynamic_pointer_cast<IDataVideo>(effect->ProcessData({source}));
    }

    ContextHandle const context = MakeShared<Context>();
    intrusive_ptr<IEffect> const effect = CreateColorspaceConverter(nullptr, context);
};

std::string PairName(IDataVideo const& source, IDataVideo const& target) {
    return std::string(source.GetDescription().name) + " to " + std::string(target.GetDescription().name);
}

/// The largest difference of colour over the pixels that `isJudged` admits; grey targets are compared with the luma.
template <class IsJudged>
double LargestError(IDataVideo const& source, IDataVideo const& target, IsJudged const& isJudged) {
    bool const isGrey = target.GetDescription().model == ColorModel::Grey;
    double largest = 0;
    FrameFormat const frame = source.GetFrameFormat();
    for (std::uint32_t y = 0; y < frame.height; ++y)
        for (std::uint32_t x = 0; x < frame.width; ++x) {
            if (!isJudged(x, y)) continue;
            Colour4 wanted = ReadColour(source, x, y);
            if (isGrey) wanted.red = wanted.green = wanted.blue = Luma(wanted);
            Colour4 const got = ReadColour(target, x, y);
            largest = std::max({largest, std::abs(wanted.red - got.red), std::abs(wanted.green - got.green),
                                std::abs(wanted.blue - got.blue)});
        }
    return largest;
}

TEST_F(ColorspaceConverterTest, EveryPairKeepsColourBars) {
    for (PixFmtDescription const& from : PixFmtDescription::GetAll()) {
        VideoHandle const source = MakeBars(*context, from.format, 131, 37);
        std::vector<unsigned char> const before = Samples(*source);
        for (PixFmtDescription const& to : PixFmtDescription::GetAll()) {
            VideoHandle const target = Convert(source, {to.format});
            ASSERT_EQ(target->GetPixFmt(), to.format);
            ASSERT_EQ(target->GetFrameFormat(), source->GetFrameFormat());
            EXPECT_LE(LargestError(*source, *target, IsInsideBar), 2.0) << PairName(*source, *target);
            for (std::uint32_t x = 0; x < 131; ++x) {
                double const alpha = to.hasAlpha && from.hasAlpha ? ReadColour(*source, x, 36).alpha : 255;
                ASSERT_EQ(ReadColour(*target, x, 36).alpha, alpha) << PairName(*source, *target) << " at " << x;
            }
        }
        EXPECT_EQ(Samples(*source), before) << from.name;
    }
}

TEST_F(ColorspaceConverterTest, EveryPairKeepsAGradientInPlace) {
    // Red less blue rises by 6 levels a pixel: chroma that lay half a sample beside its place would show as 3 or more.
    // Rounding of chroma alone comes to 0.8.
    constexpr double SLOPE = 3.0;
    for (PixFmtDescription const& from : PixFmtDescription::GetAll())
        for (PixFmtDescription const& to : PixFmtDescription::GetAll()) {
            if (from.model == ColorModel::Palette || to.model == ColorModel::Palette) continue;
            VideoHandle const source = MakeGradient(*context, from.format, 64, 64);
            VideoHandle const target = Convert(source, {to.format});
            // Chroma that is read without interpolation stands for an area: its corners lie this far from its middle.
            int const across = std::max(1 << from.chromaShiftX, 1 << to.chromaShiftX) - 1;
            int const down = std::max(1 << from.chromaShiftY, 1 << to.chromaShiftY) - 1;
            auto const isInside = [](std::uint32_t x, std::uint32_t y) { return x >= 4 && y >= 4 && x < 60 && y < 60; };
            EXPECT_LE(LargestError(*source, *target, isInside), 3.0 + SLOPE * 0.5 * (across + down))
                << PairName(*source, *target);
            EXPECT_NEAR(MeanShift(*source, *target), 0, 1.0) << PairName(*source, *target);
        }
}

TEST_F(ColorspaceConverterTest, MovesOfBytesAreExact) {
    using enum PixFmt;
    for (auto const& group :
         {std::vector{RGB24, BGR24, GBRP, RGBX, BGRX, XRGB, XBGR}, std::vector{RGBA, BGRA, ARGB, ABGR, GBRAP},
          std::vector{YUV420P, YUVJ420P, NV12, NV21}, std::vector{YUV422P, YUVJ422P, NV16, YUYV422, UYVY422, YVYU422},
          std::vector{YUV411P, YUVJ411P, UYYVYY411}, std::vector{YUV444P, YUVJ444P, NV24, NV42},
          std::vector{GRAY8, YUV444P, RGB24, PAL8, YA8}})
        for (PixFmt const format : group) {
            // Widths that end inside a group of chroma and far from any vector's length.
            for (std::uint32_t const width : {1U, 2U, 3U, 7U, 33U, 70U}) {
                VideoHandle const source = MakeNoise(*context, group[0], width, 5);
                VideoHandle const back = Convert(Convert(source, {format}), {group[0]});
                EXPECT_EQ(Samples(*back), Samples(*source)) << PixFmtDescription::Find(format)->name << " " << width;
            }
        }
    VideoHandle const luma = MakeNoise(*context, YUV420P, 33, 9);
    VideoHandle const grey = Convert(luma, {GRAY8});
    for (std::uint32_t y = 0; y < 9; ++y)
        for (std::uint32_t x = 0; x < 33; ++x)
            ASSERT_EQ(grey->GetPlane(0).GetRow(y)[x], luma->GetPlane(0).GetRow(y)[x]);
}

TEST_F(ColorspaceConverterTest, LumaIsTheWeightedSumInFullRange) {
    VideoHandle const noise = MakeNoise(*context, PixFmt::RGB24, 61, 43);
    VideoHandle const grey = Convert(noise, {PixFmt::GRAY8});
    VideoHandle const planar = Convert(noise, {PixFmt::YUV444P});
    for (std::uint32_t y = 0; y < 43; ++y)
        for (std::uint32_t x = 0; x < 61; ++x) {
            double const luma = Luma(ReadColour(*noise, x, y));
            ASSERT_NEAR(grey->GetPlane(0).GetRow(y)[x], luma, 1.0);
            ASSERT_NEAR(planar->GetPlane(0).GetRow(y)[x], luma, 1.0);
        }
}

TEST_F(ColorspaceConverterTest, ASingleChromaSampleIsTheMeanOfAll) {
    for (PixFmt const format : {PixFmt::RGB24, PixFmt::YUV444P})
        for (auto const& [width, height] : {std::pair{2U, 2U}, {4U, 3U}, {2U, 4U}}) {
            VideoHandle const source = MakeNoise(*context, format, width, height);
            VideoHandle const whole = Convert(source, {PixFmt::YUV444P});
            VideoHandle const target = Convert(source, {PixFmt::YUV410P});
            for (unsigned char plane = 1; plane < 3; ++plane) {
                double sum = 0;
                for (std::uint32_t i = 0; i < width * height; ++i)
                    sum += whole->GetPlane(plane).GetRow(i / width)[i % width];
                EXPECT_NEAR(target->GetPlane(plane).GetRow(0)[0], sum / (width * height), 1.5) << width << height;
            }
        }
}

TEST_F(ColorspaceConverterTest, APaletteHoldsUpTo256ColoursExactlyAndMoreNearly) {
    VideoHandle const bars = MakeBars(*context, PixFmt::RGBA, 131, 37);
    EXPECT_EQ(Samples(*Convert(Convert(bars, {PixFmt::PAL8}), {PixFmt::RGBA})), Samples(*bars));

    VideoHandle const gradient = MakeGradient(*context, PixFmt::RGB24, 200, 150);
    VideoHandle const indexed = Convert(gradient, {PixFmt::PAL8});
    EXPECT_LE(LargestError(*gradient, *indexed, [](auto, auto) { return true; }), 40);
    std::set<unsigned char> used;
    for (std::uint32_t y = 0; y < 150; ++y)
        used.insert(indexed->GetPlane(0).GetRow(y), indexed->GetPlane(0).GetRow(y) + 200);
    EXPECT_GT(used.size(), 200U);
}

TEST_F(ColorspaceConverterTest, PixelsOfAPaletteAreConvertedAsTheirColours) {
    VideoHandle const picture = Convert(MakeNoise(*context, PixFmt::RGBA, 29, 17), {PixFmt::PAL8});
    VideoHandle const colours = Convert(picture, {PixFmt::RGBA});
    for (PixFmtDescription const& to : PixFmtDescription::GetAll()) {
        if (to.format == PixFmt::PAL8) continue;
        EXPECT_EQ(Samples(*Convert(picture, {to.format})), Samples(*Convert(colours, {to.format}))) << to.name;
    }
}

TEST_F(ColorspaceConverterTest, ALargePictureComesOutAsItsPartsDo) {
    constexpr std::uint32_t WIDTH = 1601; // Large enough for several threads; rows end off every vector.
    constexpr std::uint32_t HEIGHT = 1350;
    constexpr std::uint32_t STRIP = 270;
    for (auto const& [from, to] : {std::pair{PixFmt::RGB24, PixFmt::YUV444P}, {PixFmt::YUVA444P, PixFmt::RGB24}}) {
        VideoHandle const source = MakeNoise(*context, from, WIDTH, HEIGHT);
        VideoHandle const whole = Convert(source, {to});
        for (std::uint32_t y = 0; y < HEIGHT; y += STRIP) {
            Rectangle const strip{0, y, WIDTH, STRIP};
            VideoHandle const expected = Convert(source->MakePart(strip), {to});
            VideoHandle const got = whole->MakePart(strip);
            EXPECT_EQ(Samples(*got), Samples(*expected)) << PairName(*source, *whole) << " from row " << y;
        }
    }
}

TEST_F(ColorspaceConverterTest, ReadsAndWritesNothingOutsideThePicture) {
    // Each plane of the source ends where the process's memory ends; rows are upside down every other time.
    for (PixFmtDescription const& from : PixFmtDescription::GetAll())
        for (std::uint32_t const width : {1U, 5U, 43U, 300U})
            for (bool const bottomUp : {false, true}) {
                VideoHandle const source = MakeBars(*context, from.format, width, 21);
                FencedPicture const fenced(*source, bottomUp);
                VideoHandle const wrapped = fenced.Wrap(*context);
                for (PixFmt const format : {PixFmt::RGB24, PixFmt::BGRA, PixFmt::YUV420P, PixFmt::YUVA444P,
                                            PixFmt::GRAY8, PixFmt::GBRP, PixFmt::ARGB})
                    EXPECT_EQ(Samples(*Convert(wrapped, {format})), Samples(*Convert(source, {format})))
                        << from.name << " " << width << (bottomUp ? " bottom up" : "");
            }
}

TEST_F(ColorspaceConverterTest, APartIsConvertedAloneAndItsSurroundingsStay) {
    VideoHandle const whole = MakeNoise(*context, PixFmt::RGB24, 90, 40);
    std::vector<unsigned char> const before = Samples(*whole);
    VideoHandle const part = whole->MakePart({8, 4, 33, 17});
    VideoHandle const target = Convert(part, {PixFmt::BGRX});
    for (std::uint32_t y = 0; y < 17; ++y)
        for (std::uint32_t x = 0; x < 33; ++x)
            ASSERT_EQ(ReadColour(*target, x, y), ReadColour(*whole, x + 8, y + 4)) << x << ", " << y;
    EXPECT_EQ(Samples(*whole), before);
}

TEST_F(ColorspaceConverterTest, NothingToDoIsTheSameObject) {
    VideoHandle const picture = MakeNoise(*context, PixFmt::BGRA, 8, 8);
    void const* const samples = picture->GetPlane(0).GetData();
    VideoHandle const result = Convert(picture, {PixFmt::BGR24, PixFmt::BGRA, PixFmt::RGBA});
    EXPECT_EQ(result, picture);
    EXPECT_EQ(result->GetPlane(0).GetData(), samples);
    EXPECT_EQ(Convert(picture, {}), picture);
}

/// Bytes of a pixel may change places within the picture, and only where nobody else sees them.
TEST_F(ColorspaceConverterTest, ReordersWithinAPictureThatNobodyElseHolds) {
    auto const converter = boost::dynamic_pointer_cast<IOneInputEffect>(effect);
    for (auto const& [from, to] : {std::pair{PixFmt::RGB24, PixFmt::BGR24}, std::pair{PixFmt::ARGB, PixFmt::BGRA}})
        for (std::uint32_t const width : {1U, 5U, 20U, 21U, 22U, 131U}) {
            effect->SetSettings(SettingsColorspaceConverter(to, true));
            DataHandle alone = MakeBars(*context, from, width, 3);
            VideoHandle const kept = MakeBars(*context, from, width, 3);
            unsigned char const* const samples = AsVideo(alone).GetPlane(0).GetData();
            converter->ProcessData(alone);
            EXPECT_EQ(AsVideo(alone).GetPlane(0).GetData(), samples);
            EXPECT_EQ(AsVideo(alone).GetPixFmt(), to);

            std::vector<unsigned char> const before = Samples(*kept);
            DataHandle shared = kept;
            converter->ProcessData(shared);
            EXPECT_EQ(kept->GetPixFmt(), from);
            EXPECT_EQ(Samples(*kept), before);
            EXPECT_EQ(Samples(AsVideo(shared)), Samples(AsVideo(alone)));
            EXPECT_EQ(LargestError(*kept, AsVideo(alone), [](auto, auto) { return true; }), 0) << width;
        }
}

TEST_F(ColorspaceConverterTest, RefusesUnknownFormatsByCode) {
    VideoHandle const picture = MakeNoise(*context, PixFmt::RGB24, 8, 8);
    ExpectRefusal([&] { Convert(picture, {static_cast<PixFmt>(9), static_cast<PixFmt>(1000)}); }, {"rgb24", "9, 1000"});
}

TEST_F(ColorspaceConverterTest, ExtraAlphaFollowsTheChromaResolution) {
    VideoHandle const source = MakeNoise(*context, PixFmt::YUV444P, 5, 3);
    VideoHandle const mask = MakeNoise(*context, PixFmt::GRAY8, 5, 3, 7);
    source->SetPlane(0, mask->GetPlane(0));
    source->SetPlane(1, mask->GetPlane(0));
    source->SetTimeStamp(11);
    source->SetDuration(22);

    VideoHandle const target = Convert(source, {PixFmt::YUV420P});
    EXPECT_EQ(target->GetTimeStamp(), 11);
    EXPECT_EQ(target->GetDuration(), 22);
    ConstPlane const chroma = target->GetExtraAlpha(1);
    ASSERT_EQ(chroma.GetWidth(), 3U);
    ASSERT_EQ(chroma.GetHeight(), 2U);
    auto const at = [&](std::uint32_t x, std::uint32_t y) { return int{mask->GetPlane(0).GetRow(y)[x]}; };
    EXPECT_EQ(chroma.GetRow(0)[1], (at(2, 0) + at(3, 0) + at(2, 1) + at(3, 1) + 2) / 4);
    EXPECT_EQ(chroma.GetRow(1)[2], at(4, 2));
    EXPECT_EQ(target->GetExtraAlpha(0).GetRow(2)[4], at(4, 2));

    EXPECT_EQ(Convert(target, {PixFmt::NV12})->GetExtraAlpha(1).GetRow(0)[1], chroma.GetRow(0)[1]);
    EXPECT_TRUE(Convert(source, {PixFmt::YUV420P}, false)->GetExtraAlpha(0).IsEmpty());
}

TEST(ChooseFormatTest, TakesTheLeastLossThenTheListsOrder) {
    using enum PixFmt;
    using Formats = std::vector<PixFmt>;
    struct Case {
        PixFmt source;
        Formats accepted;
        PixFmt chosen;
    };
    Formats const colour{BGR24, RGB24, BGRA, RGBA, RGBX, BGRX};
    for (Case const& one : {
             Case{BGRX, colour, BGRX}, // The list holds it.
             Case{RGBA, {GRAY8, ARGB, RGBA, ABGR, BGRA}, RGBA},
             Case{BGR24, {RGB24, BGR24}, BGR24},
             Case{RGB24, colour, BGR24}, // The list asks for blue first.
             Case{RGBX, colour, BGR24},
             Case{YUVJ420P, {YUV420P, YUVJ420P}, YUVJ420P},
             Case{GRAY8, {YUV420P, GRAY8}, GRAY8},
             Case{XRGB, colour, BGR24},
             Case{YUV420P, colour, BGR24},
             Case{GRAY8, colour, BGR24},
             Case{ARGB, colour, BGRA}, // Alpha outweighs everything.
             Case{YUVA420P, colour, BGRA},
             Case{RGBA, {YUV444P, GRAY8, YUVA420P}, YUVA420P},
             Case{RGB24, {YUV444P, YUVA444P}, YUV444P},
             Case{RGBA, {YUV444P, YUVA444P}, YUVA444P},
             Case{RGB24, {YUV420P, YUV422P, YUV411P}, YUV422P},
             Case{NV12, {YUVA444P, YUV422P, YUVA420P}, YUVA420P}, // Chroma that is made up is a loss too,
             Case{YUV420P, {YUV444P, RGB24, YUV422P}, YUV422P},   // the less the better,
             Case{YUV422P, {YUV420P, YUV444P}, YUV444P},          // but less grave than chroma that is dropped.
             Case{YUV411P, {YUV420P, YUV422P}, YUV422P},          // Half across is more than it has.
             Case{YUV422P, {YUV440P, YUV411P, YUV420P}, YUV411P}, // One halving each, and nothing made up.
             Case{YUV444P, {RGB24, YUVJ444P}, YUVJ444P},          // The matrix.
             Case{YUV444P, {YUV420P, RGB24}, RGB24},              // Chroma outweighs the matrix.
             Case{RGB24, {GRAY8, PAL8, YUV410P}, YUV410P},
             Case{RGB24, {GRAY8, PAL8}, PAL8},
             Case{PAL8, {BGR24, RGBA}, RGBA},
             Case{GRAY8, {YUV420P, RGB24}, YUV420P},
             Case{GRAY8, {static_cast<PixFmt>(999), GRAY8, BGRA}, GRAY8},
             Case{GRAY8, {static_cast<PixFmt>(999)}, NONE},
         })
        EXPECT_EQ(ChooseFormat(one.source, one.accepted), one.chosen) << PixFmtDescription::Find(one.source)->name;
}

} // namespace
} // namespace Velnor::Proc
