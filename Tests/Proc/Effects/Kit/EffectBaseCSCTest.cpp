#include "Proc/Effects/Lumetta/EffectBaseCSC.h"

#include "Proc/Settings/SettingsEffectEmpty.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/RecordingFactory.h"

#include <gtest/gtest.h>

namespace Velnor::Proc {
namespace {

using namespace Testing;

template <class Base>
class ColourProbe : public Base {
public:
    ColourProbe(FactoryHandle const& maker, ContextHandle const& pictures, std::vector<PixFmt> supported, bool back)
        : Base(maker, pictures), formats(std::move(supported)), convertBack(back) {}
    bool ConvertBack() const override { return convertBack; }
    std::vector<PixFmt> const& GetSupportedFormats() const override { return formats; }

    std::vector<PixFmt> const formats;
    bool const convertBack;
};

class CscProbe : public ColourProbe<EffectBaseCSC<IOneInputEffectVideo, SettingsEffectEmpty>> {
public:
    using ColourProbe::ColourProbe;
    void ProcessInternalCSC(DataHandle& data) override { seen.push_back(data->GetPixFmt()); }
    std::vector<PixFmt> seen;
};

class LumaProbe : public ColourProbe<EffectBaseCSCLuma<IOneInputEffectVideo, SettingsEffectEmpty>> {
public:
    using ColourProbe::ColourProbe;
    void ProcessInternalColor(DataHandle& data) override { AsVideo(data).Fill(Color(200, 10, 30, 77)); }
};

class EffectBaseCSCTest : public ::testing::Test {
protected:
    DataHandle Picture(PixFmt format) { return MakeNoise(*context, format, 4, 4); }

    /// Has sub-effect n replace the picture by a new one of that format, as a converter may.
    void ConvertsTo(int number, PixFmt format) {
        recorder.oneInput[number] = [this, format](DataHandle& data) { data = Picture(format); };
    }

    Recorder recorder;
    FactoryHandle factory = MakeShared<RecordingFactory>(recorder);
    ContextHandle context = CreateContext();
};

TEST_F(EffectBaseCSCTest, ConvertersAreConfiguredAtAChangeOfFormatOnly) {
    auto const effect = MakeShared<CscProbe>(factory, context, std::vector<PixFmt>{PixFmt::BGR24, PixFmt::RGB24}, true);
    EXPECT_EQ(recorder.Take(), (Calls{"create 1 SettingsColorspaceConverter/Default", "set 1"}));
    recorder.oneInput[2] = [this](DataHandle& data) { data = Picture(PixFmt::BGR24); };

    DataHandle data = Picture(PixFmt::YUV420P);
    effect->ProcessData(data);
    EXPECT_EQ(recorder.Take(), (Calls{"create 2 SettingsColorspaceConverter/Default", "set 2 formats=bgr24,rgb24",
                                      "run 2", "set 1 formats=yuv420p", "run 1"}));
    data = Picture(PixFmt::YUV420P);
    effect->ProcessData(data);
    EXPECT_EQ(recorder.Take(), (Calls{"run 2", "run 1"}));
    data = Picture(PixFmt::BGR24); // accepted already, and converted all the same; nothing to convert back
    effect->ProcessData(data);
    EXPECT_EQ(recorder.Take(), (Calls{"set 2 formats=bgr24,rgb24", "run 2"}));
    data = Picture(PixFmt::YUV420P); // the working format is the old one, the target is not
    effect->ProcessData(data);
    EXPECT_EQ(recorder.Take(), (Calls{"set 2 formats=bgr24,rgb24", "run 2", "set 1 formats=yuv420p", "run 1"}));
    EXPECT_EQ(effect->seen, std::vector<PixFmt>(4, PixFmt::BGR24));
}

TEST_F(EffectBaseCSCTest, WithoutAListNothingIsConvertedOnTheWayIn) {
    auto const effect = MakeShared<CscProbe>(factory, context, std::vector<PixFmt>{}, true);
    recorder.Take();
    DataHandle data = Picture(PixFmt::NV12);
    effect->ProcessData(data);
    EXPECT_EQ(recorder.Take(), Calls{});
    EXPECT_EQ(effect->seen, std::vector<PixFmt>{PixFmt::NV12});
}

TEST_F(EffectBaseCSCTest, AnEffectMayKeepItsWorkingFormat) {
    auto const effect = MakeShared<CscProbe>(factory, context, std::vector<PixFmt>{PixFmt::GRAY8}, false);
    ConvertsTo(2, PixFmt::GRAY8);
    DataHandle data = Picture(PixFmt::RGB24);
    recorder.Take();
    effect->ProcessData(data);
    EXPECT_EQ(recorder.Take(), (Calls{"create 2 SettingsColorspaceConverter/Default", "set 2 formats=gray8", "run 2"}));
    EXPECT_EQ(data->GetPixFmt(), PixFmt::GRAY8);
}

TEST_F(EffectBaseCSCTest, HookIsForwardedToConvertersThatExist) {
    auto const effect = MakeShared<CscProbe>(factory, context, std::vector<PixFmt>{PixFmt::BGR24}, true);
    recorder.Take();
    effect->SubEffectHook();
    EXPECT_EQ(recorder.Take(), Calls{"flush 1"});
    DataHandle data = Picture(PixFmt::BGR24);
    effect->ProcessData(data);
    recorder.Take();
    effect->SubEffectHook();
    EXPECT_EQ(recorder.Take(), (Calls{"flush 2", "flush 1"}));
}

TEST_F(EffectBaseCSCTest, LumaOfTheUnprocessedPictureComesBackAndTheInputIsSafe) {
    auto const effect = MakeShared<LumaProbe>(factory, context, std::vector<PixFmt>{}, true);
    EXPECT_EQ(recorder.Take(),
              (Calls{"create 1 SettingsColorspaceConverter/Default", "set 1",
                     "create 2 SettingsColorspaceConverter/Default", "set 2 formats=gray8",
                     "create 3 SettingsColorspaceConverter/Default", "set 3 formats=yuv444p,yuva444p"}));
    VideoHandle const input = MakeNoise(*context, PixFmt::YUV444P, 7, 5);
    std::vector<unsigned char> const before = Samples(*input);
    DataHandle data = input->MakeCopy(CopyMode::Value);
    effect->ProcessData(data);
    EXPECT_EQ(recorder.Take(), Calls{"run 3"}); // of the result: the picture had its luma at hand
    EXPECT_EQ(Samples(*input), before);
    std::vector<unsigned char> const after = Samples(AsVideo(data));
    EXPECT_TRUE(std::equal(after.begin(), after.begin() + 35, before.begin()));
    EXPECT_EQ(after[35], Color(200, 10, 30, 77).u());
    EXPECT_EQ(after[70], Color(200, 10, 30, 77).v());
}

TEST_F(EffectBaseCSCTest, LumaIsThatOfTheGreyPicture) {
    auto const effect = MakeShared<LumaProbe>(factory, context, std::vector<PixFmt>{}, true);
    recorder.Take();
    VideoHandle const grey = MakeNoise(*context, PixFmt::GRAY8, 4, 4);
    recorder.oneInput[2] = [&](DataHandle& data) { data = grey; };
    ConvertsTo(3, PixFmt::YUVA444P);
    recorder.oneInput[1] = [&](DataHandle& data) {
        EXPECT_EQ(data->GetPixFmt(), PixFmt::YUVA444P);
        std::vector<unsigned char> const samples = Samples(AsVideo(data));
        EXPECT_TRUE(std::ranges::equal(std::span(samples).first(16), Samples(*grey)));
    };
    DataHandle data = Picture(PixFmt::RGBA);
    effect->ProcessData(data);
    EXPECT_EQ(recorder.Take(), (Calls{"run 2", "run 3", "set 1 formats=rgba", "run 1"}));
}

TEST_F(EffectBaseCSCTest, AConverterThatFailsOnceIsConfiguredAgain) {
    for (std::string const& failing : {std::string("create 2"), std::string("set 2"), std::string("set 1")}) {
        recorder = {};
        auto const effect = MakeShared<CscProbe>(factory, context, std::vector<PixFmt>{PixFmt::BGR24}, true);
        ConvertsTo(2, PixFmt::BGR24);
        ConvertsTo(3, PixFmt::BGR24);
        recorder.onCall = [&](std::string const& call) {
            if (call.starts_with(failing)) VELNOR_THROW(ProcException, "once");
        };
        DataHandle data = Picture(PixFmt::GRAY8);
        EXPECT_THROW(effect->ProcessData(data), ProcException) << failing;
        recorder.onCall = nullptr;
        recorder.Take();
        data = Picture(PixFmt::GRAY8);
        effect->ProcessData(data);
        Calls const calls = recorder.Take();
        EXPECT_NE(std::ranges::find(calls, "set 1 formats=gray8"), calls.end()) << failing;
        EXPECT_EQ(calls.back(), "run 1") << failing;
    }
}

} // namespace
} // namespace Velnor::Proc
