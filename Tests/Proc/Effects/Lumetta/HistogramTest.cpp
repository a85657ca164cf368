#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Effects/Lumetta/Kernels/Luma/HistogramReport.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Settings/SettingsEffectHistogram.h"
#include "Tests/Support/ColourPictures.h"
#include "Tests/Support/HostRun.h"
#include "Tests/Support/RecordingFactory.h"

#include <gtest/gtest.h>

#include <numeric>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(Histogram)
namespace {

using namespace Testing;

SettingsEffectHistogram Measure(HostRun& run, VideoHandle const& picture) {
    auto const effect = run.Make(SettingsEffectHistogram());
    DataHandle const result = effect->ProcessData({picture});
    EXPECT_EQ(result, picture);
    return dynamic_cast<SettingsEffectHistogram const&>(effect->GetSettingsBase());
}

TEST(HistogramEffect, SaysWhatIsInEachChannel) {
    HostRun run;
    // 100 pixels: ninety of (0, 100, 255), nine of (50, 100, 255), one of (255, 100, 0).
    VideoHandle const picture = Paint(run.context, PixFmt::BGRA, 10, 10, [](std::uint32_t x, std::uint32_t y) {
        if (y < 9) return Colour4{0, 100, 255, 40};
        return x < 9 ? Colour4{50, 100, 255, 0} : Colour4{255, 100, 0, 255};
    });
    std::vector<unsigned char> const before = Samples(*picture);
    SettingsEffectHistogram const found = Measure(run, picture);
    EXPECT_EQ(Samples(*picture), before);
    EXPECT_EQ(found.GetPixels(), 100U);
    SettingsHistogramChannel const red = found.GetRed();
    EXPECT_DOUBLE_EQ(red.GetMean(), 7.05);
    EXPECT_NEAR(red.GetDeviation(), std::sqrt((9 * 2500.0 + 65025) / 100 - 7.05 * 7.05), 1e-9);
    EXPECT_EQ(red.GetLow(), 0);
    EXPECT_EQ(red.GetMedian(), 0);
    EXPECT_EQ(red.GetPercentile75(), 0);
    EXPECT_EQ(red.GetPercentile99(), 50);
    EXPECT_EQ(red.GetHigh(), 255);
    EXPECT_DOUBLE_EQ(red.GetClippedLow(), 90);
    EXPECT_DOUBLE_EQ(red.GetClippedHigh(), 1);
    EXPECT_EQ(red.GetCounts().at(50), 9U);
    EXPECT_EQ(found.GetGreen().GetPercentile1(), 100);
    EXPECT_EQ(found.GetGreen().GetDeviation(), 0);
    EXPECT_EQ(found.GetBlue().GetPercentile1(), 0);
    EXPECT_EQ(found.GetBlue().GetPercentile25(), 255);
    EXPECT_EQ(found.GetLuma().GetHigh(), 134); // 0.299 * 255 + 0.587 * 100
}

TEST(HistogramEffect, CountsEveryPixelOfEveryFormatOnce) {
    HostRun run;
    for (PixFmtDescription const& format : PixFmtDescription::GetAll()) {
        VideoHandle const picture = run.context.CreateImage(format.format, FrameFormat::Square(7, 5));
        picture->Fill(Color(60, 120, 180, 255));
        SettingsEffectHistogram const found = Measure(run, picture);
        bool const isGrey = format.model == ColorModel::Grey;
        for (auto const& [channel, level] :
             {std::pair{found.GetRed(), isGrey ? 131.0 : 180.0}, std::pair{found.GetGreen(), isGrey ? 131.0 : 120.0},
              std::pair{found.GetBlue(), isGrey ? 131.0 : 60.0}, std::pair{found.GetLuma(), 131.0}}) {
            auto const counts = channel.GetCounts();
            EXPECT_EQ(std::accumulate(counts.begin(), counts.end(), std::uint64_t{0}), 35U) << format.name;
            EXPECT_NEAR(channel.GetMean(), level, 3) << format.name;
        }
    }
}

TEST(HistogramEffect, RefusesAPictureThatNoConverterBroughtToACountedFormat) {
    Recorder recorder;
    ContextHandle const context = CreateContext();
    intrusive_ptr<IEffect> const effect = CreateHistogram(MakeShared<RecordingFactory>(recorder), context);
    EXPECT_EQ(recorder.Take()[1], "set 1 formats=rgb24,yuv444p,yuv420p");
    EXPECT_EQ(RefusalOf<EffectException>([&] { effect->ProcessData({MakeNoise(*context, PixFmt::BGR24, 4, 3)}); }),
              "Unsupported pixel format");
    EXPECT_EQ(dynamic_cast<SettingsEffectHistogram const&>(effect->GetSettingsBase()).GetPixels(), 0U);
}

TEST(HistogramEffect, DrawsInsideItsPanelAndKeepsFormatAndAlpha) {
    HostRun run;
    SettingsEffectHistogram settings;
    settings.SetDraw(true);
    settings.SetSize(50);
    for (PixFmt const format : {PixFmt::RGBA, PixFmt::YUVA444P, PixFmt::RGB24, PixFmt::GRAY8}) {
        VideoHandle const picture = Paint(run.context, format, 80, 60, [](std::uint32_t x, std::uint32_t y) {
            double const level = 60 + x + y / 2;
            return Colour4{level, level, level, double(x)};
        });
        VideoHandle const drawn = run.Apply(settings, picture);
        ASSERT_EQ(drawn->GetPixFmt(), format);
        EXPECT_NEAR(Luma(ReadColour(*drawn, 10, 10)), Luma(ReadColour(*picture, 10, 10)), 1);
        EXPECT_LT(Luma(ReadColour(*drawn, 40, 35)), 50); // no such dark levels: the panel alone
        EXPECT_GT(Luma(ReadColour(*drawn, 60, 56)), 150);
        EXPECT_EQ(ReadColour(*drawn, 60, 56).alpha, ReadColour(*picture, 60, 56).alpha);
    }
}

TEST(HistogramKernels, AChromaSampleServesThePixelsItCovers) {
    HostRun run;
    VideoHandle const wide = MakeNoise(run.context, PixFmt::YUV420P, 7, 5);
    auto const counts = Kernels::CountPlanar({wide->GetPlane(0), wide->GetPlane(1), wide->GetPlane(2)}, 1, 1);
    std::array<Kernels::Histogram, 3> expected{};
    auto const level = [](double value) { return static_cast<std::size_t>(std::clamp(std::lround(value), 0L, 255L)); };
    for (std::uint32_t y = 0; y < 5; ++y)
        for (std::uint32_t x = 0; x < 7; ++x) {
            Colour4 const c = ReadColour(*wide, x, y);
            ++expected[0][level(c.red)];
            ++expected[1][level(c.green)];
            ++expected[2][level(c.blue)];
        }
    for (std::size_t k = 0; k < 3; ++k) EXPECT_EQ(counts[k], expected[k]) << k;
}

} // namespace
} // namespace Velnor::Proc
