#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsEffectCutter.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/RecordingFactory.h"

#include <gmock/gmock.h>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(Cutter)
namespace {

using namespace Testing;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Pictures = std::vector<DataHandle>;

SettingsEffectCutter Cut(int width, int height, int overlapX, int overlapY) {
    SettingsEffectCutter settings;
    settings.SetPatchWidth(width);
    settings.SetPatchHeight(height);
    settings.SetOverlapX(overlapX);
    settings.SetOverlapY(overlapY);
    return settings;
}

/// The columns at which the patches of the first row begin.
std::vector<std::uint32_t> Columns(Pictures const& patches) {
    std::vector<std::uint32_t> columns;
    for (DataHandle const& patch : patches)
        if (Rectangle const at = AsVideo(patch).GetRectangle(); at.y == 0) columns.push_back(at.x);
    return columns;
}

struct CutterTest : ::testing::Test {
    StandardHost host;
    intrusive_ptr<IEffect> const effect = CreateCutter(host.GetFactory(), host.GetContext());

    Pictures Run(SettingsEffectCutter const& settings, std::uint32_t width, std::uint32_t height,
                 PixFmt format = PixFmt::RGB24) {
        effect->SetSettings(settings);
        Pictures pictures{MakeNoise(*host.GetContext(), format, width, height)};
        EXPECT_EQ(effect->ProcessData(pictures), nullptr);
        return pictures;
    }
};

TEST_F(CutterTest, GridsOfSizesAroundMultiples) {
    EXPECT_THAT(Columns(Run(Cut(256, 8, 32, 0), 1000, 8)), ElementsAre(0, 224, 448, 672, 896));
    EXPECT_THAT(Columns(Run(Cut(10, 8, 0, 0), 30, 8)), ElementsAre(0, 10, 20));
    EXPECT_THAT(Columns(Run(Cut(10, 8, 0, 0), 31, 8)), ElementsAre(0, 10, 20, 30));
    EXPECT_THAT(Columns(Run(Cut(10, 8, 3, 0), 24, 8)), ElementsAre(0, 7, 14));
    EXPECT_THAT(Columns(Run(Cut(10, 8, 3, 0), 25, 8)), ElementsAre(0, 7, 14, 21));
    EXPECT_THAT(Columns(Run(Cut(10, 8, -5, 0), 25, 8)), ElementsAre(0, 15)); // Gaps of five columns.
    EXPECT_THAT(Columns(Run(Cut(10, 8, -5, 0), 26, 8)), ElementsAre(0, 15, 30));
    EXPECT_THAT(Columns(Run(Cut(10, 8, 9, 0), 3, 3)), ElementsAre(0));
    Pictures const grid = Run(Cut(4, 5, 1, 2), 9, 10);
    ASSERT_EQ(grid.size(), 9U);
    EXPECT_EQ(AsVideo(grid[5]).GetRectangle(), (Rectangle{6, 3, 4, 5}));
    EXPECT_EQ(AsVideo(grid[6]).GetRectangle(), (Rectangle{0, 6, 4, 5}));
}

TEST_F(CutterTest, PatchesShowThePictureAndItsMirrorAndShareOneStorage) {
    Pictures const patches = Run(Cut(4, 3, 1, 0), 9, 5);
    VideoHandle const picture = MakeNoise(*host.GetContext(), PixFmt::RGB24, 9, 5);
    ASSERT_EQ(patches.size(), 6U);
    unsigned char const* const shared = AsVideo(patches[0]).GetPlane(0).GetRow(0);
    auto const stride = AsVideo(patches[0]).GetPlane(0).GetStride();
    for (DataHandle const& data : patches) {
        IDataVideo const& patch = AsVideo(data);
        Rectangle const at = patch.GetRectangle();
        EXPECT_EQ(patch.GetPlane(0).GetRow(0), shared + at.y * stride + at.x * 3);
        for (std::uint32_t y = 0; y < 3; ++y)
            for (std::uint32_t i = 0; i < 12; ++i) {
                std::uint32_t const column = std::min(at.x + i / 3, 17 - at.x - i / 3); // 8, and again 8 beyond
                std::uint32_t const row = std::min(at.y + y, 9 - at.y - y);
                EXPECT_EQ(patch.GetPlane(0).GetRow(y)[i], picture->GetPlane(0).GetRow(row)[column * 3 + i % 3]);
            }
    }
    AsVideo(patches[0]).Fill(Color(0, 0, 0, 255));
    EXPECT_EQ(AsVideo(patches[1]).GetPlane(0).GetRow(0)[0], picture->GetPlane(0).GetRow(0)[9]);
}

TEST_F(CutterTest, RefusalsLeaveTheInputs) {
    auto const refusal = [&](SettingsEffectCutter const& settings, Pictures pictures) {
        Pictures const before = pictures;
        effect->SetSettings(settings);
        try {
            effect->ProcessData(pictures);
        } catch (ProcException const& error) {
            EXPECT_EQ(pictures, before);
            return DescribeException(error);
        }
        return std::string("accepted");
    };
    Pictures const one{MakeNoise(*host.GetContext(), PixFmt::YUV420P, 300, 20)};
    EXPECT_THAT(refusal(Cut(64, 8, 64, 0), one),
                HasSubstr("overlap-x is 64; it must be below patch-width, which is 64"));
    EXPECT_THAT(refusal(Cut(64, 8, 0, 9), one), HasSubstr("overlap-y is 9; it must be below patch-height, which is 8"));
    EXPECT_THAT(refusal(Cut(15, 8, 0, 0), one), HasSubstr("cuts a chroma sample of format yuv420p"));
    EXPECT_THAT(refusal(Cut(300, 20, -2147483647 - 1, 0), one), "accepted");
    EXPECT_THAT(refusal(Cut(299, 20, -2147483647 - 1, 0), one), HasSubstr("pictures have at most"));
    EXPECT_THAT(refusal(Cut(8, 8, 0, 0), {}), HasSubstr("none is given"));
    EXPECT_THAT(refusal(Cut(8, 8, 0, 0), {nullptr}), HasSubstr("null"));
}

TEST(Cutter, PadsRightAndBelowAtOnceAndOnlyWhereNeeded) {
    Recorder recorder;
    ContextHandle const context = CreateContext();
    auto const effect = CreateCutter(MakeShared<RecordingFactory>(recorder), context);
    EXPECT_THAT(recorder.Take(), ElementsAre("create 1 SettingsEffectPad/Default", "set 1"));
    // The fake padding gives a picture of another size than asked for: the patches follow the picture.
    recorder.oneInput[1] = [&](DataHandle& data) { data = MakeNoise(*context, PixFmt::GRAY8, 12, 12); };
    auto const run = [&](SettingsEffectCutter settings, SettingsEffectCutter::PadMode mode, std::uint32_t width) {
        settings.SetPadMode(mode);
        settings.SetPadColor(Color(1, 2, 3, 255));
        effect->SetSettings(settings);
        Pictures pictures{MakeNoise(*context, PixFmt::GRAY8, width, 4)};
        effect->ProcessData(pictures);
        return pictures;
    };
    EXPECT_EQ(run(Cut(6, 4, 0, 0), SettingsEffectCutter::COLOR, 12).size(), 2U);
    EXPECT_THAT(recorder.Take(), IsEmpty());
    EXPECT_EQ(run(Cut(6, 4, 0, 0), SettingsEffectCutter::COLOR, 13).size(), 6U);
    EXPECT_THAT(recorder.Take(), ElementsAre("set 1 margin-color=#030201 margins=0,0,5,0", "run 1"));
    EXPECT_EQ(run(Cut(6, 3, 0, 0), static_cast<SettingsEffectCutter::PadMode>(2), 12).size(), 8U);
    EXPECT_THAT(recorder.Take(), ElementsAre("set 1 margin-color=#030201 margins=0,0,0,2 pad-mode=mirror", "run 1"));
}

} // namespace
} // namespace Velnor::Proc
