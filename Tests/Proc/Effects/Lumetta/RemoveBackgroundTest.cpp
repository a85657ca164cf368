#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Host/PictureFile.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Interfaces/WarningNode.h"
#include "Proc/Settings/SettingsEffectRemoveBackground.h"
#include "Tests/Support/HostRun.h"
#include "Tests/Support/LogCapture.h"
#include "Tests/Support/Places.h"
#include "Tests/Support/RecordingFactory.h"
#include "Tests/Support/Refusal.h"

#include <gmock/gmock.h>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(RemoveBackground)
namespace {

using namespace Testing;
using ::testing::HasSubstr;
using Pictures = std::vector<DataHandle>;
using Pixel = std::array<int, 4>;
using S = SettingsEffectRemoveBackground;

constexpr std::uint32_t WIDTH = 120;
constexpr std::uint32_t HEIGHT = 90;
constexpr Rectangle LEFT{15, 30, 30, 40};
constexpr Rectangle MIDDLE{45, 25, 30, 45};
constexpr Rectangle RIGHT{75, 30, 30, 40};
constexpr Pixel GROUND{60, 120, 70, 255};
constexpr Pixel THING{200, 60, 40, 255};

bool IsIn(Rectangle const& part, std::uint32_t x, std::uint32_t y) {
    return x >= part.x && x < part.x + part.width && y >= part.y && y < part.y + part.height;
}

void Fill(IDataVideo& picture, Rectangle const& part, Pixel const& colour) {
    MutablePlane const plane = picture.GetMutablePlane(0);
    std::uint64_t const bytes = picture.GetDescription().planes[0].bytes;
    for (std::uint32_t y = part.y; y < part.y + part.height; ++y)
        for (std::uint64_t i = part.x * bytes; i < (part.x + part.width) * bytes; ++i)
            plane.GetRow(y)[i] = static_cast<unsigned char>(colour[i % bytes]);
}

struct RemoveBackgroundTest : ::testing::Test, HostRun {
    intrusive_ptr<IEffect> const effect = Make(S());

    VideoHandle Draw(std::vector<Rectangle> const& things, Pixel const& thing = THING) {
        VideoHandle const picture = context.CreateImage(PixFmt::RGBA, {WIDTH, HEIGHT});
        Fill(*picture, {0, 0, WIDTH, HEIGHT}, GROUND);
        for (Rectangle const& part : things) Fill(*picture, part, thing);
        return picture;
    }

    VideoHandle MakeStrokes(Rectangle const& subject, Rectangle const& background) {
        VideoHandle const strokes = MakeFlat(context, PixFmt::GRAY8, WIDTH, HEIGHT, {0});
        Fill(*strokes, subject, {255});
        Fill(*strokes, background, {128});
        return strokes;
    }

    VideoHandle Run(S const& settings, Pictures inputs) {
        effect->SetSettings(settings);
        return VideoHandle(&AsVideo(effect->ProcessData(inputs)));
    }

    static S To(S::Result result) {
        S settings;
        settings.SetResult(result);
        return settings;
    }

    static Pixel At(VideoHandle const& result, std::uint32_t x, std::uint32_t y) {
        std::uint64_t const bytes = result->GetDescription().planes[0].bytes;
        unsigned char const* const pixel = result->GetPlane(0).GetRow(y) + x * bytes;
        return {pixel[0], pixel[1], pixel[2], bytes == 4 ? pixel[3] : 255};
    }

    /// Away from the edges of the things, where nothing is in doubt.
    static void ExpectOpacity(VideoHandle const& result, Rectangle const& thing, int opacity) {
        ASSERT_EQ(result->GetPixFmt(), PixFmt::RGBA);
        Rectangle const inner{thing.x + 3, thing.y + 3, thing.width - 6, thing.height - 6};
        Rectangle const outer{thing.x - 3, thing.y - 3, thing.width + 6, thing.height + 6};
        for (std::uint32_t y = 0; y < HEIGHT; ++y)
            for (std::uint32_t x = 0; x < WIDTH; ++x) {
                bool const isClear = !IsIn(outer, x, y);
                if (!isClear && !IsIn(inner, x, y)) continue;
                ASSERT_NEAR(At(result, x, y)[3], isClear ? 0 : opacity, isClear ? 0 : 1) << x << ' ' << y;
            }
    }
};

TEST_F(RemoveBackgroundTest, FindsASubjectByItselfAndKeepsItsColour) {
    VideoHandle const picture = Draw({MIDDLE});
    std::vector<unsigned char> const before = Samples(*picture);
    VideoHandle const result = Run({}, {picture});
    ExpectOpacity(result, MIDDLE, 255);
    // No trace of the ground is in what is left of the edge.
    for (std::uint32_t x = MIDDLE.x - 3; x < MIDDLE.x + 3; ++x)
        for (std::size_t k = 0; k < 3 && At(result, x, 45)[3] != 0; ++k)
            EXPECT_NEAR(At(result, x, 45)[k], THING[k], 2) << x;
    EXPECT_EQ(Samples(*picture), before);
    EXPECT_EQ(Samples(*Run({}, {picture})), Samples(*result));
}

TEST_F(RemoveBackgroundTest, DropsWhatIsSmallBesideTheSubject) {
    ExpectOpacity(Run({}, {Draw({MIDDLE, {100, 10, 5, 5}})}), MIDDLE, 255);
}

TEST_F(RemoveBackgroundTest, ASubjectOfTwoColoursIsFoundWhole) {
    VideoHandle const picture = Draw({MIDDLE});
    Fill(*picture, {MIDDLE.x + 10, MIDDLE.y + 15, 10, 15}, {70, 110, 80, 255});
    ExpectOpacity(Run({}, {picture}), MIDDLE, 255);
}

TEST_F(RemoveBackgroundTest, StrokesDecide) {
    VideoHandle const picture = Draw({LEFT, RIGHT});
    // Those on the background go on beside its thing.
    Rectangle const onLeft{25, 45, 10, 3}, leftOut{5, 45, 25, 3}, onRight{85, 45, 10, 3}, rightOut{90, 45, 25, 3};
    ExpectOpacity(Run({}, {picture, MakeStrokes(onLeft, rightOut)}), LEFT, 255);
    ExpectOpacity(Run({}, {picture, MakeStrokes(onRight, leftOut)}), RIGHT, 255);
    S other;
    other.SetForeground(128);
    other.SetBackground(255);
    ExpectOpacity(Run(other, {picture, MakeStrokes(rightOut, onLeft)}), LEFT, 255);
}

TEST_F(RemoveBackgroundTest, WhatWasClearStaysClear) {
    ExpectOpacity(Run({}, {Draw({MIDDLE}, {200, 60, 40, 100})}), MIDDLE, 100);
}

TEST_F(RemoveBackgroundTest, LaysTheSubjectOverAColourOrAPicture) {
    VideoHandle const picture = Draw({MIDDLE});
    S colour = To(S::COLOR);
    colour.SetColor(Color(230, 20, 10, 255));
    VideoHandle const onColour = Run(colour, {picture});
    EXPECT_EQ(onColour->GetPixFmt(), PixFmt::RGB24);
    EXPECT_EQ(At(onColour, 2, 2), (Pixel{10, 20, 230, 255}));
    EXPECT_EQ(At(onColour, 60, 45), THING);

    VideoHandle const scene = MakeFlat(context, PixFmt::GRAY8, 33, 44, {90});
    Fill(*scene, {0, 22, 33, 22}, {180});
    for (Pictures const& inputs :
         {Pictures{picture, scene}, Pictures{picture, MakeStrokes({55, 40, 9, 9}, {5, 5, 20, 5}), scene}}) {
        VideoHandle const onScene = Run(To(S::PICTURE), inputs);
        EXPECT_EQ(onScene->GetFrameFormat(), picture->GetFrameFormat());
        EXPECT_EQ(At(onScene, 2, 2), (Pixel{90, 90, 90, 255}));
        EXPECT_EQ(At(onScene, 2, HEIGHT - 2), (Pixel{180, 180, 180, 255}));
        EXPECT_EQ(At(onScene, 60, 45), THING);
    }
}

TEST_F(RemoveBackgroundTest, KeepsAllWhenNothingStandsOut) {
    LogCapture const log(30);
    VideoHandle const result = Run({}, {Draw({})});
    EXPECT_THAT(log.lines, ::testing::Contains("RemoveBackground.cpp: SettingsEffectRemoveBackground_Velnor finds no "
                                               "subject that stands out from a background"));
    for (std::uint32_t y = 0; y < HEIGHT; y += 7)
        for (std::uint32_t x = 0; x < WIDTH; x += 7) EXPECT_EQ(At(result, x, y), GROUND);
}

TEST_F(RemoveBackgroundTest, TheMaskIsTheOpacityAndStrokesBindInIt) {
    VideoHandle const picture = Draw({MIDDLE});
    // A thread of background across the subject.
    VideoHandle const strokes = MakeStrokes({55, 40, 9, 9}, {50, 60, 20, 1});
    VideoHandle const clear = Run({}, {picture, strokes});
    VideoHandle const mask = Run(To(S::MASK), {picture, strokes});
    ASSERT_EQ(mask->GetPixFmt(), PixFmt::GRAY8);
    for (std::uint32_t y = 0; y < HEIGHT; ++y)
        for (std::uint32_t x = 0; x < WIDTH; ++x) ASSERT_EQ(mask->GetPlane(0).GetRow(y)[x], At(clear, x, y)[3]);
    for (std::uint32_t x = 50; x < 70; ++x) EXPECT_EQ(mask->GetPlane(0).GetRow(60)[x], 0) << x;
    EXPECT_EQ(mask->GetPlane(0).GetRow(44)[60], 255);
}

TEST_F(RemoveBackgroundTest, ANetworkFindsWhatColoursDoNot) {
    VideoHandle const photo = ReadPicture(std::string(Testing::SOURCE_DIR) + "/Samples/astronaut.png", context).picture;
    S settings = To(S::MASK);
    settings.SetNeural(S::DefaultNetwork().SetModel("u2netp.onnx"));
    VideoHandle const mask = Run(settings, {photo});
    struct Place {
        std::uint32_t x, y;
        int opacity;
    };
    // Face, hair, suit, the black of the helmet; wall, flag, the model of a rocket behind her.
    for (Place const& place : {Place{225, 120, 255},
                               {225, 40, 255},
                               {150, 300, 255},
                               {400, 430, 255},
                               {480, 30, 0},
                               {20, 60, 0},
                               {350, 60, 0}})
        EXPECT_EQ(mask->GetPlane(0).GetRow(place.y)[place.x], place.opacity) << place.x << ' ' << place.y;
    auto const& after = dynamic_cast<S const&>(effect->GetSettingsBase());
    EXPECT_GT(after.GetDoubt(), 0);
    EXPECT_LT(after.GetDoubt(), 15);
    EXPECT_EQ(effect->GetStatistic().FindChild(WARNING_NODE), nullptr);
}

TEST_F(RemoveBackgroundTest, WithoutItsNetworkItSaysSoAndGoesByColours) {
    S settings;
    settings.SetNeural(S::DefaultNetwork().SetModel("absent.onnx"));
    EXPECT_EQ(Samples(*Run(settings, {Draw({MIDDLE})})), Samples(*Run({}, {Draw({MIDDLE})})));
    Run(settings, {Draw({MIDDLE})});
    EXPECT_THAT(effect->GetStatistic().FindChild(WARNING_NODE)->GetValue(), HasSubstr("no network absent.onnx"));
    settings.SetNeural(S::DefaultNetwork().SetModel("horizon.onnx"));
    EXPECT_EQ(RefusalOf([&] { Run(settings, {Draw({MIDDLE})}); }),
              "The network horizon.onnx gives 2 values; a map of its input's size, 320 x 320, is needed.");
}

TEST_F(RemoveBackgroundTest, TakesThinAndTinyPictures) {
    VideoHandle const picture = Draw({MIDDLE});
    for (FrameFormat const& size : {FrameFormat{1, 1}, FrameFormat{1, 40}, FrameFormat{60, 2}, FrameFormat{3, 3}}) {
        VideoHandle const part = picture->MakePart({30, 20, size.width, size.height});
        VideoHandle const result = Run({}, {part});
        EXPECT_EQ(result->GetFrameFormat().width, size.width);
        EXPECT_EQ(result->GetFrameFormat().height, size.height);
    }
}

TEST_F(RemoveBackgroundTest, AsksForDefaultsAloneAndLetsADetectorsErrorPass) {
    Recorder recorder;
    auto const gives = [this](PixFmt format) {
        return [this, format](DataHandle& data) { data = MakeFlat(context, format, WIDTH, HEIGHT, {9, 9, 9, 255}); };
    };
    recorder.oneInput[1] = gives(PixFmt::RGBA);
    recorder.oneInput[2] = gives(PixFmt::RGB24);
    recorder.oneInput[3] = gives(PixFmt::GRAY8);
    recorder.twoInput[5] = [&](DataHandle& data, ConstDataHandle const&) { gives(PixFmt::GRAY8)(data); };
    auto const recorded = CreateRemoveBackground(MakeShared<RecordingFactory>(recorder), host.GetContext());
    LogCapture const log(30);
    recorded->ProcessData(Pictures{Draw({})});
    for (std::string const& call : recorder.Take())
        if (call.starts_with("create")) {
            EXPECT_THAT(call, ::testing::EndsWith("/Default"));
            EXPECT_THAT(call, ::testing::Not(HasSubstr("EdgeRemove")));
        }
    EXPECT_THAT(log.lines, ::testing::Contains("Faces.h: SettingsEffectRemoveBackground_Velnor finds no face"));
    constexpr int DETECTOR = 6;
    recorder.oneInput[DETECTOR] = [](DataHandle&) { VELNOR_THROW(EffectException, "The model is missing."); };
    EXPECT_EQ(RefusalOf([&] { recorded->ProcessData(Pictures{Draw({})}); }), "The model is missing.");
}

TEST_F(RemoveBackgroundTest, SaysWhatIsWrong) {
    auto const refusal = [&](S const& settings, Pictures const& inputs) -> std::string {
        try {
            Run(settings, inputs);
        } catch (EffectException const& exception) {
            return DescribeException(exception);
        }
        return "none";
    };
    VideoHandle const picture = Draw({MIDDLE});
    VideoHandle const strokes = MakeStrokes({55, 40, 9, 9}, {5, 5, 20, 5});
    EXPECT_THAT(refusal({}, {}), HasSubstr("A picture is needed, and strokes may follow it; 0 pictures"));
    EXPECT_THAT(refusal({}, {picture, strokes, picture}), HasSubstr("3 pictures are given"));
    EXPECT_THAT(refusal(To(S::PICTURE), {picture}), HasSubstr("its new background are needed"));
    EXPECT_THAT(refusal({}, {picture, nullptr}), HasSubstr("null"));
    EXPECT_THAT(refusal({}, {picture, MakeFlat(context, PixFmt::GRAY8, 5, 4, {255})}),
                HasSubstr("The strokes are 5 x 4 pixels, the picture 120 x 90"));
    EXPECT_THAT(refusal({}, {picture, MakeFlat(context, PixFmt::GRAY8, WIDTH, HEIGHT, {255})}),
                HasSubstr("on the background (value 128)"));
    S same;
    same.SetBackground(255);
    EXPECT_THAT(refusal(same, {picture, strokes}), HasSubstr("are both 255"));
}

} // namespace
} // namespace Velnor::Proc
