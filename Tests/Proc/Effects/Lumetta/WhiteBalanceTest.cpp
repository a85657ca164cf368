#include "Proc/Settings/SettingsEffectWhiteBalance.h"

#include "Proc/Effects/Kit/EffectEntry.h"
#include "Tests/Support/HostRun.h"
#include "Tests/Support/RecordingFactory.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(WhiteBalance)
namespace {

using namespace Testing;

// Component 0: c = 250, grey 150: the table rises by 2 above 250 and ends at 160.
Color const STEEP(250, 100, 100, 255);

class WhiteBalanceTest : public HostRunTest {
protected:
    VideoHandle Balance(VideoHandle const& picture, Color const& reference) {
        return Apply(SettingsEffectWhiteBalance(reference), picture);
    }
};

TEST_F(WhiteBalanceTest, MapsTheFirstThreeBytesByPositionAndNothingElse) {
    // Two pixels: the reference itself, and one above it in every component.
    std::vector<unsigned char> const mapped3{150, 150, 150, 160, 183, 183};
    VideoHandle const three = MakeFlat(context, PixFmt::BGR24, 2, 3, {250, 100, 100, 255, 150, 150});
    std::vector<unsigned char> const got3 = Samples(*Balance(three, STEEP));
    EXPECT_TRUE(std::equal(mapped3.begin(), mapped3.end(), got3.begin()));
    EXPECT_TRUE(std::equal(mapped3.begin(), mapped3.end(), got3.begin() + 12));

    VideoHandle const four = MakeFlat(context, PixFmt::BGRA, 2, 1, {250, 100, 100, 7, 255, 150, 150, 9});
    EXPECT_EQ(Samples(*Balance(four, STEEP)), (std::vector<unsigned char>{150, 150, 150, 7, 160, 183, 183, 9}));
}

TEST_F(WhiteBalanceTest, SharedInputAndTheBytesBetweenRowsStay) {
    std::vector<unsigned char> memory(20 * 3, 77); // rows of 2 pixels, 20 bytes apart, last row first
    MutablePlane const rows(memory.data(), 20, 6, 3, 3, true);
    VideoHandle wrapped;
    context.WrapImage(&wrapped, PixFmt::BGR24, FrameFormat::Square(2, 3), {rows}, nullptr);
    std::vector<unsigned char> const before = Samples(*wrapped);
    VideoHandle const result = Balance(wrapped->MakeCopy(CopyMode::Value), STEEP);
    EXPECT_NE(Samples(*result), before);
    EXPECT_EQ(Samples(*wrapped), before);
    EXPECT_EQ(memory, std::vector<unsigned char>(60, 77));
}

TEST_F(WhiteBalanceTest, NeutralReferencesLeaveThePictureAlone) {
    VideoHandle const picture = MakeNoise(context, PixFmt::RGB24, 31, 7);
    std::vector<unsigned char> const before = Samples(*picture);
    for (auto const grey : std::initializer_list<unsigned char>{0, 128, 255})
        EXPECT_EQ(Samples(*Balance(picture->MakeCopy(CopyMode::Value), {grey, grey, grey, 255})), before);
}

TEST_F(WhiteBalanceTest, TheColourNamedComesOutGreyInEveryFormat) {
    Color const cast(0x60, 0x96, 0xb4, 255); // a warm cast: red 0xb4
    int const grey = (0x60 + 0x96 + 0xb4) / 3;
    for (PixFmtDescription const& format : PixFmtDescription::GetAll()) {
        if (format.model == ColorModel::Grey || format.model == ColorModel::Palette) continue;
        VideoHandle const picture = context.CreateImage(format.format, FrameFormat::Square(16, 8));
        picture->Fill(cast);
        VideoHandle const result = Balance(picture, cast);
        EXPECT_EQ(result->GetPixFmt(), format.format) << format.name;
        std::vector<unsigned char> const rgb = Samples(*Convert(result, PixFmt::RGB24));
        int const tolerance = format.model == ColorModel::Luma ? 3 : 0; // 8-bit luma and chroma are coarser than RGB
        for (unsigned int i = 0; i < 3; ++i)
            EXPECT_LE(std::abs(rgb[i] - grey), tolerance) << format.name << " component " << i;
    }
}

TEST_F(WhiteBalanceTest, PrefersBlueFirstAndConvertsBack) {
    Recorder recorder;
    auto const effect = CreateWhiteBalance(MakeShared<RecordingFactory>(recorder), host.GetContext());
    effect->SetSettings(SettingsEffectWhiteBalance(STEEP));
    recorder.oneInput[2] = [this](DataHandle& data) { data = MakeNoise(context, PixFmt::BGR24, 2, 2); };
    effect->ProcessData(std::vector<DataHandle>{MakeNoise(context, PixFmt::YUV420P, 2, 2)});
    EXPECT_EQ(recorder.calls, (std::vector<std::string>{"create 1 SettingsColorspaceConverter/Default", "set 1",
                                                        "create 2 SettingsColorspaceConverter/Default",
                                                        "set 2 formats=bgr24,rgb24,bgra,rgba,rgb0,bgr0", "run 2",
                                                        "set 1 formats=yuv420p", "run 1"}));
}

} // namespace
} // namespace Velnor::Proc
