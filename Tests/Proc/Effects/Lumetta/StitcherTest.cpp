#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Settings/SettingsEffectCutter.h"
#include "Proc/Settings/SettingsEffectStitcher.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/RecordingFactory.h"

#include <gmock/gmock.h>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(Cutter)
VELNOR_DECLARE_EFFECT(Stitcher)
namespace {

using namespace Testing;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Pictures = std::vector<DataHandle>;

/// The samples; of a palette picture its colours, since padding numbers them anew.
std::vector<unsigned char> Content(IDataVideo const& picture) {
    std::vector<unsigned char> const samples = Samples(picture);
    if (picture.GetPixFmt() != PixFmt::PAL8) return samples;
    std::vector<unsigned char> colours;
    auto const palette = samples.end() - 1024;
    for (auto index = samples.begin(); index != palette; ++index)
        colours.insert(colours.end(), palette + 4 * *index, palette + 4 * *index + 4);
    return colours;
}

struct StitcherTest : ::testing::Test {
    StandardHost host;
    intrusive_ptr<IEffect> const cutter = CreateCutter(host.GetFactory(), host.GetContext());
    intrusive_ptr<IEffect> const effect = CreateStitcher(host.GetFactory(), host.GetContext());

    Pictures Cut(IDataVideo const& picture, int patchWidth, int patchHeight, int overlapX, int overlapY) {
        SettingsEffectCutter settings;
        settings.SetPatchWidth(patchWidth);
        settings.SetPatchHeight(patchHeight);
        settings.SetOverlapX(overlapX);
        settings.SetOverlapY(overlapY);
        cutter->SetSettings(settings);
        Pictures pictures{picture.MakeCopy(CopyMode::Value)};
        cutter->ProcessData(pictures);
        return pictures;
    }

    VideoHandle Stitch(SettingsEffectStitcher const& settings, Pictures patches) {
        effect->SetSettings(settings);
        return VideoHandle(&AsVideo(effect->ProcessData(patches)));
    }

    static SettingsEffectStitcher In(SettingsEffectStitcher::Mode mode) {
        SettingsEffectStitcher settings;
        settings.SetMode(mode);
        return settings;
    }

    VideoHandle Grey(std::uint32_t width, std::uint32_t height, int level) {
        return MakeFlat(*host.GetContext(), PixFmt::GRAY8, width, height, {level});
    }

    static SettingsEffectStitcher Sized(int width, int height) {
        SettingsEffectStitcher settings;
        settings.SetWidth(width);
        settings.SetHeight(height);
        return settings;
    }
};

TEST_F(StitcherTest, UndoesTheCutExactlyInEveryFormat) {
    for (PixFmtDescription const& format : PixFmtDescription::GetAll())
        for (auto const& [overlapX, overlapY] : {std::pair{0, 0}, {8, 4}, {4, 12}, {12, 12}}) {
            SCOPED_TRACE(std::string(format.name) + " " + std::to_string(overlapX) + " " + std::to_string(overlapY));
            VideoHandle const picture = MakeNoise(*host.GetContext(), format.format, 60, 37);
            picture->SetTimeStamp(77);
            VideoHandle const result = Stitch(Sized(60, 37), Cut(*picture, 16, 16, overlapX, overlapY));
            EXPECT_EQ(result->GetPixFmt(), format.format);
            EXPECT_EQ(result->GetFrameFormat(), picture->GetFrameFormat());
            EXPECT_EQ(Content(*result), Content(*picture));
            EXPECT_EQ(result->GetTimeStamp(), 77);
        }
}

TEST_F(StitcherTest, KeepsExtraAlpha) {
    VideoHandle const picture = MakeNoise(*host.GetContext(), PixFmt::RGB24, 34, 24);
    VideoHandle const alpha = MakeNoise(*host.GetContext(), PixFmt::GRAY8, 34, 24, 2);
    picture->SetPlane(0, alpha->GetPlane(0));
    VideoHandle const result = Stitch({}, Cut(*picture, 10, 10, 2, 3));
    ConstPlane const kept = result->GetExtraAlpha(0);
    ASSERT_EQ(kept.GetHeight(), 24U);
    for (std::uint64_t y = 0; y < 24; ++y)
        EXPECT_TRUE(std::equal(kept.GetRow(y), kept.GetRow(y) + 34, alpha->GetPlane(0).GetRow(y)));
}

TEST_F(StitcherTest, LaysPatchesWithoutPlacesOutAsAGridAndFadesOneIntoTheNext) {
    SettingsEffectStitcher settings;
    settings.SetColumns(2);
    settings.SetOverlapX(3);
    VideoHandle const result = Stitch(settings, {Grey(6, 2, 0), Grey(6, 2, 240), Grey(6, 2, 90)});
    ASSERT_EQ(result->GetFrameFormat().width, 9U);
    ASSERT_EQ(result->GetFrameFormat().height, 4U);
    EXPECT_EQ(Samples(*result), (std::vector<unsigned char>{0,  0,  0,  60, 120, 180, 240, 240, 240, //
                                                            0,  0,  0,  60, 120, 180, 240, 240, 240, //
                                                            90, 90, 90, 90, 90,  90,  0,   0,   0,   //
                                                            90, 90, 90, 90, 90,  90,  0,   0,   0}));
    EXPECT_EQ(Stitch(In(SettingsEffectStitcher::PATCHES), Pictures(5, Grey(2, 3, 7)))->GetFrameFormat(),
              FrameFormat::Square(6, 6));
}

TEST_F(StitcherTest, BlendsColoursOfPalettesThatDiffer) {
    VideoHandle const red = host.GetContext()->CreateImage(PixFmt::PAL8, FrameFormat::Square(1, 1));
    VideoHandle const blue = host.GetContext()->CreateImage(PixFmt::PAL8, FrameFormat::Square(1, 1));
    red->Fill(Color(0, 0, 255, 255));
    blue->Fill(Color(255, 0, 0, 255));
    VideoHandle const result = Stitch(In(SettingsEffectStitcher::PATCHES), {red, blue});
    EXPECT_EQ(result->GetPixFmt(), PixFmt::RGBA);
    EXPECT_EQ(Samples(*result), (std::vector<unsigned char>{255, 0, 0, 255, 0, 0, 255, 255}));
}

TEST_F(StitcherTest, SaysWhatIsWrong) {
    auto const refusal = [&](SettingsEffectStitcher const& settings, Pictures const& patches) -> std::string {
        try {
            Stitch(settings, patches);
        } catch (EffectException const& exception) {
            return DescribeException(exception);
        }
        return "none";
    };
    VideoHandle const grey = Grey(8, 8, 1);
    SettingsEffectStitcher wide;
    wide.SetOverlapX(8);
    EXPECT_THAT(refusal({}, {}), HasSubstr("none is given"));
    EXPECT_THAT(refusal({}, {grey, nullptr}), HasSubstr("null"));
    EXPECT_THAT(
        refusal(In(SettingsEffectStitcher::PATCHES), {grey, MakeNoise(*host.GetContext(), PixFmt::RGB24, 8, 8)}),
        HasSubstr("Patch 2"));
    EXPECT_THAT(refusal(wide, {grey, grey}), HasSubstr("overlap-x is 8"));
    EXPECT_THAT(refusal(Sized(9, 0), {grey}), HasSubstr("cover 8 pixels"));
    wide.SetOverlapX(3);
    VideoHandle const chroma = MakeNoise(*host.GetContext(), PixFmt::YUV420P, 8, 8);
    EXPECT_THAT(refusal(wide, {chroma, chroma}), HasSubstr("colour sample"));
}

TEST_F(StitcherTest, GivesPhotographsToThePanoramaOfTheHost) {
    Recorder recorder;
    intrusive_ptr<IEffect> const joiner = CreateStitcher(MakeShared<RecordingFactory>(recorder), host.GetContext());
    auto const create = std::string("create 2 SettingsEffectPanorama/Default");
    Pictures photographs{Grey(40, 40, 1), Grey(40, 40, 9)};
    recorder.Take();
    joiner->SetSettings(SettingsEffectStitcher());
    joiner->ProcessData(photographs);
    EXPECT_THAT(recorder.Take(), ElementsAre(create, "set 2", "run 2"));
    joiner->SetSettings(In(SettingsEffectStitcher::PANORAMA));
    joiner->ProcessData(photographs);
    EXPECT_THAT(recorder.Take(), ElementsAre("run 2"));

    // Places, a grid or the mode make them patches, and so does it to be alone.
    SettingsEffectStitcher grid;
    grid.SetColumns(2);
    for (auto const& settings : {grid, In(SettingsEffectStitcher::PATCHES)}) {
        joiner->SetSettings(settings);
        joiner->ProcessData(photographs);
    }
    joiner->SetSettings(SettingsEffectStitcher());
    Pictures placed = Cut(*Grey(40, 40, 5), 20, 40, 0, 0);
    joiner->ProcessData(placed);
    Pictures one{Grey(40, 40, 1)};
    joiner->ProcessData(one);
    EXPECT_THAT(recorder.Take(), IsEmpty());
}

} // namespace
} // namespace Velnor::Proc
