#include "Proc/Settings/SettingsEffectOilPaint.h"

#include "Proc/Effects/Kit/EffectEntry.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/RecordingFactory.h"

#include <gtest/gtest.h>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(OilPaint)
namespace {

using namespace Testing;

SettingsEffectOilPaint Radius(double radius) {
    SettingsEffectOilPaint settings;
    settings.SetRadius(radius);
    return settings;
}

/// The effects are 1 painter, 2 downscaler, 3 upscaler.
class OilPaintTest : public CompositionTest<CreateOilPaint> {
protected:
    Calls Process(std::uint32_t width, std::uint32_t height) {
        DataHandle data = context->CreateImage(PixFmt::GRAY8, FrameFormat::Square(width, height));
        DataHandle const result = Run({data});
        rectangle = AsVideo(result).GetRectangle();
        return recorder.Take();
    }

    static Calls Configuration(std::string const& even, std::string const& reduced) {
        return {"set 1", "set 3 mode=to-frame fitting=stretch target=" + even,
                "set 2 method=fast-bilinear mode=to-frame fitting=inside target=" + reduced};
    }
    static Calls Painted(Calls calls) {
        calls.push_back("run 1");
        return calls;
    }
    static Calls Reduced(Calls calls) {
        for (char const* const call : {"run 2", "run 1", "run 3"}) calls.push_back(call);
        return calls;
    }

    Calls created = recorder.Take();
    Rectangle rectangle;
};

TEST_F(OilPaintTest, CreatesImageMagicksPainterAndTheHostsResizers) {
    EXPECT_EQ(created,
              (Calls{"create 1 SettingsEffectOilPaint/ImageMagick", "set 1", "create 2 SettingsResizer/Default",
                     "set 2", "create 3 SettingsResizer/Default", "set 3"}));
}

TEST_F(OilPaintTest, HalvesUntilTheShorterSideIsAtMost2048) {
    EXPECT_EQ(Process(2048, 4096), Painted(Configuration("2048x4096", "2048x4096")));
    EXPECT_EQ(Process(2047, 2047), Painted(Configuration("2048x2048", "2048x2048")));
    EXPECT_EQ(Process(2049, 2049), Reduced(Configuration("2050x2050", "1025x1025")));
    EXPECT_EQ(Process(4098, 4097), Reduced(Configuration("4098x4098", "1024x1024")));
    EXPECT_EQ(Process(5000, 5001), Reduced(Configuration("5000x5002", "1250x1250")));
}

TEST_F(OilPaintTest, TheEvenSizeDecidesWhetherToConfigureAndTheRealOneIsRestored) {
    EXPECT_EQ(Process(1001, 701), Painted(Configuration("1002x702", "1002x702")));
    EXPECT_EQ(Process(1002, 702), Painted({}));
    recorder.oneInput[3] = [this](DataHandle& data) {
        data = context->CreateImage(PixFmt::GRAY8, FrameFormat::Square(2050, 2052));
    };
    Process(2049, 2051);
    EXPECT_EQ(rectangle, (Rectangle{0, 0, 2049, 2051}));
    EXPECT_EQ(Process(2050, 2051), Reduced({}));
    EXPECT_EQ(rectangle, (Rectangle{0, 0, 2050, 2051}));
}

TEST_F(OilPaintTest, NewSettingsReachThePainterWithTheNextPicture) {
    Process(10, 10);
    effect->SetSettings(Radius(3)); // equal
    EXPECT_EQ(Process(10, 10), Painted({}));
    effect->SetSettings(Radius(5));
    EXPECT_EQ(recorder.Take(), Calls{});
    Calls expected = Painted(Configuration("10x10", "10x10"));
    expected[0] = "set 1 radius=5";
    EXPECT_EQ(Process(10, 10), expected);
}

TEST_F(OilPaintTest, ASubEffectThatFailsIsConfiguredAgain) {
    for (std::string const failing : {"set 1", "set 2", "set 3"}) {
        Process(20, 20);
        ExpectFailureAt(failing, [&] { Process(2050, 2050); });
        EXPECT_EQ(Process(20, 20), Painted(Configuration("20x20", "20x20"))) << failing;
    }
}

} // namespace
} // namespace Velnor::Proc
