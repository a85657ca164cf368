#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Effects/Lumetta/GridCut/GridCapacities.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"
#include "Tests/Proc/Effects/Lumetta/GridCut/GridCutReference.h"
#include "Tests/Support/LogCapture.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/RecordingFactory.h"
#include "Tests/Support/Refusal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(GridGraph)
namespace {

using namespace Testing;
using Bytes = std::vector<unsigned char>;
using Kernels::ColourBytes;
using Kernels::SimilarityTable;

constexpr unsigned char F = 255;
constexpr unsigned char B = 128;

SettingsEffectGrabCutSegmentation Values(int foreground, int background) {
    SettingsEffectGrabCutSegmentation settings;
    settings.SetForeground(foreground);
    settings.SetBackground(background);
    return settings;
}

class GridGraphTest : public CompositionTest<CreateGridGraph> {
protected:
    void SetUp() override { effect->SetSettings(Values(F, B)); }

    VideoHandle Picture(PixFmt format, std::uint32_t width, std::uint32_t height, Bytes const& samples) {
        VideoHandle const picture = context->CreateImage(format, {width, height, 4, 3});
        MutablePlane const plane = picture->GetMutablePlane(0);
        for (std::uint32_t y = 0; y < height; ++y)
            std::copy_n(samples.begin() + static_cast<std::ptrdiff_t>(y * plane.GetWidth()), plane.GetWidth(),
                        plane.GetRow(y));
        return picture;
    }
    DataHandle Run(VideoHandle const& picture, VideoHandle const& strokes) {
        return effect->ProcessData(std::vector<DataHandle>{picture, strokes});
    }
    Bytes RunRow(PixFmt format, Bytes const& pixels, Bytes const& strokes) {
        auto const width = static_cast<std::uint32_t>(strokes.size());
        return Samples(AsVideo(Run(Picture(format, width, 1, pixels), Picture(PixFmt::GRAY8, width, 1, strokes))));
    }
};

TEST(SimilarityTable, IsTheFormula) {
    SimilarityTable const three(3);
    SimilarityTable const one(1);
    for (unsigned d = 0; d <= 3 * 255 * 255; ++d)
        ASSERT_EQ(three[d], static_cast<std::int16_t>(std::exp(-static_cast<double>(d) / 9.0 * 0.0625) * 1024 + 1.0))
            << d;
    for (unsigned d = 0; d <= 255; ++d)
        ASSERT_EQ(one[d * d], static_cast<std::int16_t>(std::exp(-static_cast<double>(d * d) * 0.0625) * 1024 + 1.0))
            << d;
    EXPECT_EQ(three[0], 1025);
    EXPECT_EQ(three[999], 1);
}

TEST(GridCapacities, ComparesTheColourBytesOfEachFormat) {
    struct Expected {
        PixFmt format;
        unsigned bytes, ignored; ///< 9 = none.
    };
    for (auto const& [format, bytes, ignored] :
         {Expected{PixFmt::RGB24, 3, 9}, Expected{PixFmt::BGR24, 3, 9}, Expected{PixFmt::ARGB, 4, 0},
          Expected{PixFmt::ABGR, 4, 0}, Expected{PixFmt::XRGB, 4, 0}, Expected{PixFmt::XBGR, 4, 0},
          Expected{PixFmt::RGBA, 4, 3}, Expected{PixFmt::BGRA, 4, 3}, Expected{PixFmt::RGBX, 4, 3},
          Expected{PixFmt::BGRX, 4, 3}, Expected{PixFmt::GRAY8, 1, 9}}) {
        auto const places = ColourBytes::Find(format);
        ASSERT_TRUE(places);
        SimilarityTable const table(places->count);
        for (unsigned k = 0; k < bytes; ++k) {
            Bytes pixels(2 * bytes, 40);
            pixels[bytes + k] = 43;
            Kernels::GridCapacities capacities(2, 1);
            capacities.LinkRow(0, pixels.data(), nullptr, *places, table);
            EXPECT_EQ(capacities.GetRight()[0], k == ignored ? 1025
                                                : bytes == 1 ? 584
                                                             : 962)
                << int(format) << " " << k;
        }
    }
    EXPECT_FALSE(ColourBytes::Find(PixFmt::YUV420P));
    EXPECT_FALSE(ColourBytes::Find(PixFmt::PAL8));
}

TEST(GridCapacities, LinksBothWaysAndMarksStrokes) {
    Bytes const upper{10, 10, 12};
    Bytes const lower{10, 11, 12};
    Kernels::GridCapacities capacities(3, 2);
    SimilarityTable const table(1);
    capacities.LinkRow(0, upper.data(), lower.data(), {}, table);
    capacities.LinkRow(1, lower.data(), nullptr, {}, table);
    auto const list = [](auto span) { return std::vector<int>(span.begin(), span.end()); };
    EXPECT_EQ(list(capacities.GetRight()), (std::vector<int>{1025, 798, 0, 962, 962, 0}));
    EXPECT_EQ(list(capacities.GetLeft()), (std::vector<int>{0, 1025, 798, 0, 962, 962}));
    EXPECT_EQ(list(capacities.GetDown()), (std::vector<int>{1025, 962, 1025, 0, 0, 0}));
    EXPECT_EQ(list(capacities.GetUp()), (std::vector<int>{0, 0, 0, 1025, 962, 1025}));

    Bytes const strokes{7, 9, 0};
    capacities.MarkRow(0, strokes.data(), 7, 9);
    capacities.MarkRow(1, strokes.data(), 7, 7); // one value for both is foreground
    EXPECT_EQ(list(capacities.GetSource()), (std::vector<int>{1024, 0, 0, 1024, 0, 0}));
    EXPECT_EQ(list(capacities.GetSink()), (std::vector<int>{0, 1024, 0, 0, 0, 0}));
}

TEST_F(GridGraphTest, CutsAlongTheEdgeBetweenTheStrokes) {
    EXPECT_EQ(RunRow(PixFmt::GRAY8, {10, 11, 10, 90, 91, 92}, {F, 0, 0, 0, 0, B}), (Bytes{F, F, F, B, B, B}));
    // Without strokes nothing reaches the sink; a lone stroke takes what it can reach.
    EXPECT_EQ(RunRow(PixFmt::GRAY8, {1, 2, 3}, {0, 0, 0}), (Bytes{F, F, F}));
    EXPECT_EQ(RunRow(PixFmt::GRAY8, {1, 2, 3}, {0, 0, B}), (Bytes{B, B, B}));
    // A stroke is not beyond doubt: its link of 1024 is less than that between equal neighbours.
    EXPECT_EQ(RunRow(PixFmt::GRAY8, {1, 1, 1}, {F, B, B}), (Bytes{B, B, B}));
}

TEST_F(GridGraphTest, ComparesAndWritesTheLowBytesOfTheValues) {
    effect->SetSettings(Values(300, 256 + 7));
    EXPECT_EQ(RunRow(PixFmt::GRAY8, {10, 10, 90, 90}, {44, 0, 0, 7}), (Bytes{44, 44, 7, 7}));
    effect->SetSettings(Values(5, 5));
    EXPECT_EQ(RunRow(PixFmt::GRAY8, {10, 90}, {0, 5}), (Bytes{5, 5}));
}

TEST_F(GridGraphTest, EqualsTheReferenceOnColourPictures) {
    std::uint32_t const width = 97;
    std::uint32_t const height = 61;
    VideoHandle const picture = MakeNoise(*context, PixFmt::BGRX, width, height);
    VideoHandle const strokes = MakeNoise(*context, PixFmt::GRAY8, width, height, 5);
    MutablePlane const samples = picture->GetMutablePlane(0);
    for (std::uint32_t y = 0; y < height; ++y) // a texture, so that links of all sizes appear
        for (std::uint32_t i = 0; i < width * 4; ++i) samples.GetRow(y)[i] = samples.GetRow(y)[i] / 16;
    MutablePlane const marks = strokes->GetMutablePlane(0);
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x) marks.GetRow(y)[x] = marks.GetRow(y)[x] < 40 ? (x < y ? F : B) : 0;

    GridProblem problem(width, height);
    auto const link = [&](std::uint32_t x0, std::uint32_t y0, std::uint32_t x1, std::uint32_t y1) {
        double sum = 0;
        for (unsigned k = 0; k < 3; ++k) {
            double const d = samples.GetRow(y0)[4 * x0 + k] - samples.GetRow(y1)[4 * x1 + k];
            sum += d * d;
        }
        return static_cast<std::int16_t>(std::exp(-sum / 9.0 * 0.0625) * 1024 + 1.0);
    };
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            if (x + 1 < width) problem.SetRight(x, y, link(x, y, x + 1, y), link(x, y, x + 1, y));
            if (y + 1 < height) problem.SetDown(x, y, link(x, y, x, y + 1), link(x, y, x, y + 1));
            if (marks.GetRow(y)[x] == F) problem.source[problem.At(x, y)] = 1024;
            if (marks.GetRow(y)[x] == B) problem.sink[problem.At(x, y)] = 1024;
        }
    }
    Bytes expected;
    for (bool const isSink : CutByBoost(problem).isSink) expected.push_back(isSink ? B : F);
    EXPECT_EQ(std::ranges::count(expected, B) * 5 > std::ssize(expected), true) << "a cut worth the name";
    EXPECT_EQ(Samples(AsVideo(Run(picture, strokes))), expected);
}

TEST_F(GridGraphTest, ConvertsOtherFormatsToGreyWithOneConverter) {
    VideoHandle const picture = MakeNoise(*context, PixFmt::YUV444P, 4, 1);
    VideoHandle const strokes = Picture(PixFmt::GRAY8, 4, 1, {F, 0, 0, B});
    recorder.oneInput[1] = [&](DataHandle& data) { data = Picture(PixFmt::GRAY8, 4, 1, {1, 1, 70, 70}); };
    EXPECT_TRUE(recorder.calls.empty());
    EXPECT_EQ(Samples(AsVideo(Run(picture, strokes))), (Bytes{F, F, B, B}));
    Run(picture, strokes);
    EXPECT_EQ(recorder.calls, (std::vector<std::string>{"create 1 SettingsColorspaceConverter/Default",
                                                        "set 1 formats=gray8", "run 1", "run 1"}));
}

TEST_F(GridGraphTest, AnswersInTheStrokesFrameAndSaysWhatItDoes) {
    LogCapture log(30);
    VideoHandle const picture = Picture(PixFmt::GRAY8, 2, 1, {0, 90});
    VideoHandle const strokes = context->CreateImage(PixFmt::GRAY8, {2, 1, 16, 15});
    strokes->GetMutablePlane(0).GetRow(0)[0] = F;
    strokes->GetMutablePlane(0).GetRow(0)[1] = B;
    auto const progress = Core::ProgressController::Create();
    effect->SetProgressController(progress);
    DataHandle const result = Run(picture, strokes);
    EXPECT_EQ(result->GetFrameFormat(), (FrameFormat{2, 1, 16, 15}));
    EXPECT_EQ(result->GetPixFmt(), PixFmt::GRAY8);
    EXPECT_DOUBLE_EQ(progress->GetFraction(), 1.0);
    EXPECT_EQ(progress->GetRange(), 100U);
    std::vector<std::string> own;
    for (std::string const& line : log.lines)
        if (line.starts_with("GridGraph.cpp: ")) own.push_back(line.substr(15));
    EXPECT_EQ(own, (std::vector<std::string>{"Allocate memory for GridGraph:2056", "Prepare GridGraph graph",
                                             "Compute GridGraph graph", "Prepare GridGraph result", "GridGraph done"}));
}

TEST_F(GridGraphTest, AStopAnywhereLeavesThePictureAndCounts) {
    struct StopWhen : Core::IProgressObserver {
        void OnProgress(double fraction) override {
            if (fraction >= limit) progress->RequestStop();
        }
        double limit = 0;
        intrusive_ptr<Core::IProgressController> progress = Core::ProgressController::Create();
    };
    for (double limit : {0.0, 0.3, 0.66, 0.67, 0.9}) {
        StopWhen observer;
        observer.limit = limit;
        observer.progress->RegisterEventHandler(&observer);
        if (limit == 0.0) observer.progress->RequestStop();
        effect->SetProgressController(observer.progress);
        VideoHandle const picture = MakeNoise(*context, PixFmt::RGB24, 660, 12);
        VideoHandle const strokes = MakeNoise(*context, PixFmt::GRAY8, 660, 12, 4);
        EXPECT_EQ(Run(picture, strokes), picture) << limit;
    }
    EXPECT_EQ(effect->GetStatistic().FindChild("Count")->GetValue(), "5");
}

TEST_F(GridGraphTest, RefusesStrokesThatDoNotFit) {
    VideoHandle const picture = MakeNoise(*context, PixFmt::RGB24, 6, 4);
    for (auto const& strokes : {MakeNoise(*context, PixFmt::GRAY8, 6, 5), MakeNoise(*context, PixFmt::RGB24, 6, 4)})
        ExpectRefusal<EffectException>([&] { Run(picture, strokes); }, {"strokes"});
}

TEST_F(GridGraphTest, CutsAPictureThatIsLargeEnoughForThreads) {
    constexpr std::uint32_t WIDTH = 1600;
    constexpr std::uint32_t HEIGHT = 1400;
    constexpr std::uint32_t EDGE = 700;
    Bytes pixels(WIDTH * HEIGHT);
    Bytes strokes(WIDTH * HEIGHT);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        bool const isObject = i % WIDTH < EDGE + i / WIDTH % 8;
        pixels[i] = isObject ? 40 : 200;
        strokes[i] = isObject ? F : B;
    }
    DataHandle const mask =
        Run(Picture(PixFmt::GRAY8, WIDTH, HEIGHT, pixels), Picture(PixFmt::GRAY8, WIDTH, HEIGHT, strokes));
    EXPECT_TRUE(Samples(AsVideo(mask)) == strokes);
}

} // namespace
} // namespace Velnor::Proc
