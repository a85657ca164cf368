#include "Proc/Settings/SettingsEffectDirectionalAreaDeformation.h"

#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Effects/Lumetta/Kernels/Geometry/DisplacementField.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/Places.h"
#include "Tests/Support/RecordingFactory.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(DirectionalAreaDeformation)
namespace {

using namespace Testing;
using Kernels::Box;
using Kernels::DisplacementField;

TEST(DisplacementField, BoxesAreExactAndStopsTouchNothing) {
    struct Case {
        PushStroke stroke;
        int size;
        Box box;
    };
    for (Case const& one : {Case{{10, 10, 20, 10}, 8, {6, 6, 24, 14}},
                            {{20, 10, 10, 10}, 7, {7, 7, 24, 14}}, // odd: a pixel more to the right and down
                            {{1, 1, 3, 2}, 10, {0, 0, 8, 7}},
                            {{28, 18, 40, 30}, 10, {23, 13, 30, 20}},
                            {{34, 10, 40, 10}, 8, {}}, // begins at the right border
                            {{10, 24, 12, 24}, 8, {}},
                            {{-20, 5, -6, 5}, 8, {}},
                            {{10, 10, 10, 10}, 8, {}}, // no length
                            {{10, 10, 20, 10}, 0, {}},
                            {{INT32_MIN, 0, INT32_MAX, 0}, INT32_MAX, {0, 0, 30, 20}}}) {
        DisplacementField field(30, 20);
        EXPECT_EQ(field.AddStroke(one.stroke, one.size, 100), one.box);
        for (int y = 0; y < 20; ++y)
            for (int x = 0; x < 30; ++x) {
                auto const [dx, dy] = field.At(x, y);
                ASSERT_TRUE(std::isfinite(dx) && std::isfinite(dy));
                bool const isIn = x >= one.box.x0 && x < one.box.x1 && y >= one.box.y0 && y < one.box.y1;
                if (!isIn) {
                    ASSERT_EQ(field.At(x, y), DisplacementField::Pair()) << x << ", " << y;
                }
            }
    }
}

/// The push of one stroke on an empty field, in double and column by column.
std::pair<double, double> Expected(PushStroke const& stroke, int size, double strength, int x, int y) {
    double const wayX = stroke.toX - stroke.fromX;
    double const wayY = stroke.toY - stroke.fromY;
    double const length = std::hypot(wayX, wayY);
    double const share =
        std::clamp(((x - stroke.fromX) * wayX + (y - stroke.fromY) * wayY) / (length * length), 0.0, 1.0);
    double const distance = std::hypot(x - stroke.fromX - share * wayX, y - stroke.fromY - share * wayY) / (size * 0.5);
    if (distance >= 1) return {0, 0};
    double const s = std::max((distance - 0.25) / 0.75, 0.0);
    double const push = (2 * s * s * s - 3 * s * s + 1) * strength * size * 0.2 / 100;
    return {wayX / length * push, wayY / length * push};
}

TEST(DisplacementField, OneStrokePushesByTheDistanceFromItsCapsule) {
    PushStroke const stroke{9, 13, 21, 6};
    DisplacementField field(30, 20);
    field.AddStroke(stroke, 14, 70);
    double const peak = 0.7 * 14 * 0.2;
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 30; ++x) {
            auto const [dx, dy] = Expected(stroke, 14, 70, x, y);
            EXPECT_NEAR(field.At(x, y).x, dx, 1e-5 * peak) << x << ", " << y;
            EXPECT_NEAR(field.At(x, y).y, dy, 1e-5 * peak) << x << ", " << y;
        }
    EXPECT_NEAR(std::hypot(field.At(9, 13).x, field.At(9, 13).y), peak, 1e-6);
}

TEST(DisplacementField, PushesAddUpToTheLargerOfTwo) {
    PushStroke const right{5, 10, 25, 10};
    DisplacementField field(30, 20);
    field.AddStroke(right, 10, 100);
    EXPECT_EQ(field.At(15, 10), (DisplacementField::Pair{2, 0}));
    field.AddStroke(right, 10, 100); // saturates
    EXPECT_EQ(field.At(15, 10), (DisplacementField::Pair{2, 0}));
    field.AddStroke(right, 10, 300);
    EXPECT_EQ(field.At(15, 10), (DisplacementField::Pair{6, 0})); // (2 + 6) * 6 / 8
    field.AddStroke({15, 0, 15, 19}, 10, 300);
    EXPECT_EQ(field.At(15, 10), (DisplacementField::Pair{3, 3})); // across: half of each
    field.AddStroke({15, 19, 15, 0}, 10, 0);
    EXPECT_FLOAT_EQ(field.At(15, 10).x, 3); // a push of nothing
}

class PushBrush : public ::testing::Test {
protected:
    PushBrush() { host.LoadPlugin(Testing::LUMETTA_FILE); }

    static SettingsEffectDirectionalAreaDeformation Stroke(PushStroke const& stroke, int size = 20,
                                                           double strength = 100) {
        SettingsEffectDirectionalAreaDeformation settings;
        settings.SetFromX(stroke.fromX);
        settings.SetFromY(stroke.fromY);
        settings.SetToX(stroke.toX);
        settings.SetToY(stroke.toY);
        settings.SetSize(size);
        settings.SetStrength(strength);
        return settings;
    }
    intrusive_ptr<IOneInputEffectVideo> Make() {
        return host.GetFactory()->CreateOneInputEffect(SettingsEffectDirectionalAreaDeformation::CLASS_ID,
                                                       ImplNames::VELNOR);
    }
    static unsigned char At(DataHandle const& data, unsigned int x, unsigned int y) {
        return *AsVideo(data).GetPlane(0).GetOffsetPtr(x, y);
    }

    StandardHost host;
    IEffectContext& context = *host.GetContext();
};

TEST_F(PushBrush, ContentMovesAlongTheStrokeAndOnlyTheBoxIsWritten) {
    VideoHandle const picture = MakeNoise(context, PixFmt::GRAY8, 60, 40);
    auto const effect = Make();
    effect->SetSettings(Stroke({20, 20, 40, 20})); // by 4 pixels
    DataHandle data = picture->MakeCopy(CopyMode::Value);
    effect->ProcessData(data);
    for (unsigned int x = 20; x <= 40; ++x) EXPECT_EQ(At(data, x, 20), At(picture, x - 4, 20)) << x;
    for (unsigned int y = 0; y < 40; ++y)
        for (unsigned int x = 0; x < 60; ++x)
            if (x < 10 || x >= 50 || y < 10 || y >= 30) {
                ASSERT_EQ(At(data, x, y), At(picture, x, y));
            }

    // Another picture of the same size: outside the box it stays, inside is what the first one says.
    VideoHandle const other = MakeNoise(context, PixFmt::GRAY8, 60, 40, 2);
    effect->SetSettings(Stroke({20, 20, 40, 20}, 20, 0));
    DataHandle second = other->MakeCopy(CopyMode::Value);
    effect->ProcessData(second);
    EXPECT_EQ(At(second, 30, 20), At(picture, 26, 20));
    EXPECT_EQ(At(second, 5, 5), At(other, 5, 5));
}

TEST_F(PushBrush, StrokesOfOneListAreThoseOfRepeatedCalls) {
    for (PixFmt const format : {PixFmt::RGB24, PixFmt::YUV420P, PixFmt::YUYV422, PixFmt::YUV410P, PixFmt::PAL8}) {
        SCOPED_TRACE(PixFmtDescription::Find(format)->name);
        VideoHandle const picture = MakeNoise(context, format, 61, 43);
        PushStroke const first{12, 12, 21, 15};
        PushStroke const second{45, 30, 38, 33};
        auto const repeated = Make();
        DataHandle fed = picture->MakeCopy(CopyMode::Value);
        for (PushStroke const& stroke : {first, second}) { // the result is handed back
            repeated->SetSettings(Stroke(stroke, 15));
            repeated->ProcessData(fed);
        }
        auto const listed = Make();
        auto settings = Stroke({3, 3, 3, 3}, 15);
        settings.SetStrokes({first, second});
        listed->SetSettings(settings);
        DataHandle data = picture->MakeCopy(CopyMode::Value);
        listed->ProcessData(data);
        EXPECT_EQ(Samples(AsVideo(fed)), Samples(AsVideo(data)));
        EXPECT_NE(Samples(AsVideo(data)), Samples(*picture));
        EXPECT_EQ(data->GetPixFmt(), format == PixFmt::PAL8 ? PixFmt::RGBA : format);
    }
}

TEST_F(PushBrush, APalettePictureThatNoStrokeTouchesStaysOne) {
    for (PushStroke const& stroke : {PushStroke{3, 3, 3, 3}, PushStroke{80, 3, 90, 3}}) {
        auto const effect = Make();
        effect->SetSettings(Stroke(stroke));
        DataHandle data = MakeNoise(context, PixFmt::PAL8, 61, 43);
        IData const* const before = data.get();
        effect->ProcessData(data);
        EXPECT_EQ(data.get(), before);
        EXPECT_EQ(data->GetPixFmt(), PixFmt::PAL8);
    }
}

TEST_F(PushBrush, ThePartThatIsRemappedGivesTheWholeFramesBytes) {
    VideoHandle const picture = MakeNoise(context, PixFmt::YUV420P, 90, 70);
    auto const effect = Make();
    effect->SetSettings(Stroke({30, 30, 50, 44}, 31, 400)); // by 24.8 pixels
    DataHandle data = picture->MakeCopy(CopyMode::Value);
    effect->ProcessData(data);
    DisplacementField field(90, 70);
    field.AddStroke({30, 30, 50, 44}, 31, 400);
    ConstPlane const luma = picture->GetPlane(0);
    for (int y = 15; y < 60; ++y)
        for (int x = 15; x < 66; ++x) {
            auto const [dx, dy] = field.At(x, y);
            double const atX = x - double{dx};
            double const atY = y - double{dy};
            auto const sample = [&](double cx, double cy) {
                return double{1.0 * luma.GetRow(static_cast<std::uint64_t>(cy))[static_cast<std::uint64_t>(cx)]};
            };
            double const fx = atX - std::floor(atX);
            double const fy = atY - std::floor(atY);
            double const upper = std::lerp(sample(atX, atY), sample(atX + 1, atY), fx);
            double const lower = std::lerp(sample(atX, atY + 1), sample(atX + 1, atY + 1), fx);
            EXPECT_NEAR(At(data, static_cast<unsigned>(x), static_cast<unsigned>(y)), std::lerp(upper, lower, fy), 0.6)
                << x << ", " << y;
        }
}

TEST_F(PushBrush, StrokesWithoutLengthOrOutsideChangeNothing) {
    for (SettingsEffectDirectionalAreaDeformation const& settings :
         {Stroke({1, 1, 1, 1}, 8), Stroke({100, 1, 120, 1}, 8)}) {
        DataHandle data = MakeNoise(context, PixFmt::GRAY8, 30, 20);
        std::vector<unsigned char> const before = Samples(AsVideo(data));
        auto const effect = Make();
        effect->SetSettings(settings);
        effect->ProcessData(data);
        EXPECT_EQ(Samples(AsVideo(data)), before);
    }
}

TEST(PushBrushCalls, TheFieldIsNewForANewSizeAndTheRemapperSeesThePart) {
    Recorder recorder;
    ContextHandle const context = CreateContext();
    std::vector<Rectangle> parts;
    recorder.oneInput[1] = [&](DataHandle& data) { parts.push_back(AsVideo(data).GetRectangle()); };
    auto const effect = CreateDirectionalAreaDeformation(MakeShared<RecordingFactory>(recorder), context);
    EXPECT_EQ(recorder.Take(), (Calls{"create 1 SettingsEffectRemapping/Default", "set 1",
                                      "create 2 SettingsColorspaceConverter/Default", "set 2"}));
    SettingsEffectDirectionalAreaDeformation settings;
    settings.SetFromX(100);
    settings.SetFromY(100);
    settings.SetToX(140);
    settings.SetToY(100);
    settings.SetSize(40);
    settings.SetStrength(100); // by 8 pixels, to the right
    effect->SetSettings(settings);
    for (unsigned int const width : {300U, 300U, 301U})
        effect->ProcessData(std::vector<DataHandle>{MakeNoise(*context, PixFmt::RGB24, width, 200)});
    EXPECT_EQ(recorder.Take(),
              (Calls{"set 1", "run 1", "set 1", "set 1", "run 1", "set 1", "set 1", "run 1", "set 1"}));
    // Columns 80 to 160 and rows 80 to 120, eight columns more to the left, one and two for the neighbours, on fours.
    EXPECT_EQ(parts, std::vector<Rectangle>(3, Rectangle{68, 76, 96, 48}));
}

TEST(PushStrokes, AreWrittenAsPairsOfPoints) {
    using Form = TextForm<std::vector<PushStroke>>;
    std::vector<PushStroke> const strokes{{10, 10, 60, 10}, {-5, 0, 7, 8}};
    EXPECT_EQ(Form::Parse("10,10>60,10;-5,0>7,8"), strokes);
    EXPECT_EQ(Form::Print(strokes), "10,10>60,10;-5,0>7,8");
    EXPECT_TRUE(Form::Parse("").empty());
    for (char const* const wrong : {"10,10", "1,2>3", "1,2>3,4>5,6", "1,2>3,4;", "1,2>3,x", "1,2,3>4,5"})
        EXPECT_THROW(Form::Parse(wrong), SettingsTextException) << wrong;
}

} // namespace
} // namespace Velnor::Proc
