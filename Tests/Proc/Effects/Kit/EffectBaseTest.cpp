#include "Proc/Effects/Lumetta/EffectBase.h"

#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Settings/SettingsEffectCustom.h"
#include "Proc/Settings/SettingsEffectEmpty.h"
#include "Proc/Settings/SettingsEffectPixelate.h"
#include "Tests/Support/LogCapture.h"
#include "Tests/Support/Pictures.h"

#include <gtest/gtest.h>

#include <functional>
#include <typeinfo>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(Custom)
VELNOR_DECLARE_EFFECT(EmptyEffect)
namespace {

using namespace Testing;
using Lines = std::vector<std::string>;

/// An effect that writes down the calls of its hooks and does what the test says.
template <class Base>
class Probe : public Base {
public:
    using Base::Base;
    using Base::SetSettings;

    void ResetSettings() override {
        calls.push_back("reset, strength " + std::to_string(static_cast<int>(this->settings.GetStrength())));
        Base::ResetSettings();
    }
    void AddStatistic(Core::Property& statistics) override { statistics.SetChild("own", "node"); }

    Lines calls;
};

class OneInputProbe : public Probe<EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectPixelate>> {
public:
    using Probe::Probe;
    void ProcessInternal(DataHandle& data) override { work(data); }
    std::function<void(DataHandle&)> work = [](DataHandle&) {};
};

class TwoInputProbe : public Probe<EffectBaseTwoInput<ITwoInputEffectVideo, SettingsEffectPixelate>> {
public:
    using Probe::Probe;
    void ProcessInternal(DataHandle& first, ConstDataHandle const&) override { first->SetTimeStamp(99); }
};

class VarInputProbe : public Probe<EffectBaseVarInput<IVarInputEffectVideo, SettingsEffectPixelate>> {
public:
    using Probe::Probe;
    DataHandle ProcessInternal(std::vector<DataHandle> const& inputs) override { return inputs.back(); }
};

SettingsEffectPixelate Strength(double value) {
    SettingsEffectPixelate settings;
    settings.SetStrength(value);
    return settings;
}

SettingsEffectPixelate Bypassed() {
    SettingsEffectPixelate settings;
    settings.SetBypassed(true);
    return settings;
}

std::string CountOf(IEffect& effect) { return effect.GetStatistic().FindChild("Count")->GetValue(); }

class EffectBaseTest : public ::testing::Test {
protected:
    ContextHandle context = CreateContext();
    DataHandle MakePicture() {
        DataHandle const picture = MakeNoise(*context, PixFmt::RGB24, 5, 3);
        picture->SetTimeStamp(1000);
        picture->SetDuration(40);
        return picture;
    }
};

TEST_F(EffectBaseTest, SettingsAreResetThenAssignedOnlyWhenTheyDiffer) {
    auto const effect = MakeShared<OneInputProbe>(nullptr, context);
    IEffect& asEffect = *effect;
    asEffect.SetSettings(Strength(10));
    asEffect.SetSettings(Strength(10));
    effect->SetSettings(Strength(20)); // the direct call does the same as the one through the interface
    EXPECT_EQ(effect->calls, (Lines{"reset, strength 80", "reset, strength 10"}));
    asEffect.SetSettings(asEffect.GetSettingsBase());
    EXPECT_EQ(dynamic_cast<SettingsEffectPixelate const&>(asEffect.GetSettingsBase()).GetStrength(), 20);

    EXPECT_THROW(asEffect.SetSettings(SettingsEffectEmpty()), std::bad_cast);
    EXPECT_EQ(dynamic_cast<SettingsEffectPixelate const&>(asEffect.GetSettingsBase()).GetStrength(), 20);
    EXPECT_EQ(effect->calls.size(), 2U);
}

TEST_F(EffectBaseTest, OwnSettingsObjectSurvivesBeingSetEvenWhenItIsNotEqualToItself) {
    auto const effect = MakeShared<OneInputProbe>(nullptr, context);
    SettingsEffectPixelate odd = Strength(std::numeric_limits<double>::quiet_NaN());
    odd.SetMethodUpscale(SettingsResizer::SPLINE);
    effect->SetSettings(odd);
    effect->SetSettings(effect->GetSettingsBase());
    EXPECT_EQ(dynamic_cast<SettingsEffectPixelate const&>(effect->GetSettingsBase()).GetMethodUpscale(),
              SettingsResizer::SPLINE);
}

TEST_F(EffectBaseTest, AttributesSurviveAnEffectThatChangesOrReplacesThePicture) {
    auto const effect = MakeShared<OneInputProbe>(nullptr, context);
    DataHandle data = MakePicture();
    IData const* const before = data.get();
    effect->work = [](DataHandle& picture) {
        picture->SetTimeStamp(-1);
        picture->SetDuration(-1);
    };
    effect->ProcessData(data);
    EXPECT_EQ(data.get(), before);
    EXPECT_EQ(data->GetTimeStamp(), 1000);
    EXPECT_EQ(data->GetDuration(), 40);

    effect->work = [this](DataHandle& picture) { picture = MakeNoise(*context, PixFmt::GRAY8, 1, 1); };
    effect->ProcessData(data);
    EXPECT_NE(data.get(), before);
    EXPECT_EQ(data->GetTimeStamp(), 1000);
    EXPECT_EQ(data->GetDuration(), 40);
    EXPECT_EQ(CountOf(*effect), "2");
}

TEST_F(EffectBaseTest, TwoInputEffectsDoNotRestoreAttributes) {
    auto const effect = MakeShared<TwoInputProbe>(nullptr, context);
    std::vector<DataHandle> const inputs{MakePicture(), MakePicture()};
    EXPECT_EQ(static_cast<IEffect&>(*effect).ProcessData(inputs)->GetTimeStamp(), 99);
    EXPECT_EQ(CountOf(*effect), "1");
}

TEST_F(EffectBaseTest, EmptySettingsSkipTheWork) {
    LogCapture log(30);
    auto const one = MakeShared<OneInputProbe>(nullptr, context);
    one->SetSettings(Bypassed());
    one->work = [](DataHandle&) { FAIL() << "must not run"; };
    DataHandle data = MakePicture();
    IData const* const before = data.get();
    one->ProcessData(data);
    EXPECT_EQ(data.get(), before);
    EXPECT_EQ(CountOf(*one), "0");
    EXPECT_EQ(log.lines, (Lines{"EffectBase.h: SettingsEffectPixelate_Velnor starts",
                                "EffectBase.h: SettingsEffectPixelate_Velnor is empty"}));

    auto const two = MakeShared<TwoInputProbe>(nullptr, context);
    two->SetSettings(Bypassed());
    two->ProcessData(data, data);
    EXPECT_EQ(data->GetTimeStamp(), 1000);

    auto const var = MakeShared<VarInputProbe>(nullptr, context);
    EXPECT_EQ(var->Process({MakePicture(), data}), data);
    var->SetSettings(Bypassed());
    EXPECT_EQ(var->Process({data}), nullptr);
    EXPECT_EQ(CountOf(*var), "1");
}

TEST_F(EffectBaseTest, LogsAtLevelThirtyOnly) {
    auto const effect = MakeShared<OneInputProbe>(nullptr, context);
    DataHandle data = MakePicture();
    {
        LogCapture quiet(29);
        effect->ProcessData(data);
        EXPECT_EQ(quiet.lines, Lines{});
    }
    LogCapture verbose(30);
    effect->ProcessData(data);
    EXPECT_EQ(verbose.lines, (Lines{"EffectBase.h: SettingsEffectPixelate_Velnor starts",
                                    "EffectBase.h: SettingsEffectPixelate_Velnor done"}));
}

TEST_F(EffectBaseTest, AFailureIsNeitherCountedNorLoggedAsDone) {
    LogCapture log(30);
    auto const effect = MakeShared<OneInputProbe>(nullptr, context);
    effect->work = [](DataHandle& data) {
        data->SetTimeStamp(5);
        VELNOR_THROW(EffectException, "broken");
    };
    DataHandle data = MakePicture();
    EXPECT_THROW(effect->ProcessData(data), EffectException);
    EXPECT_EQ(CountOf(*effect), "0");
    EXPECT_EQ(data->GetTimeStamp(), 5); // attributes belong to a finished frame
    EXPECT_EQ(log.lines, Lines{"EffectBase.h: SettingsEffectPixelate_Velnor starts"});

    DataHandle none;
    EXPECT_THROW(effect->ProcessData(none), EffectException);
}

TEST_F(EffectBaseTest, StatisticsCarryNameCountAndOwnNodes) {
    auto const effect = MakeShared<OneInputProbe>(nullptr, context);
    Core::Property const statistics = effect->GetStatistic();
    EXPECT_EQ(statistics.GetName(), "Velnor::Proc::EffectBase<class Velnor::Proc::IOneInputEffectVideo,class "
                                    "Velnor::Proc::SettingsEffectPixelate>::GetStatistic");
    EXPECT_EQ(statistics.FindChild(Core::PerformanceTimer::IMPL_NAME)->GetValue(), "SettingsEffectPixelate_Velnor");
    EXPECT_EQ(statistics.FindChild("Count")->GetValue(), "0");
    EXPECT_EQ(statistics.GetChildren().back().GetName(), "own");
    EXPECT_NE(MakeShared<VarInputProbe>(nullptr, context)->GetStatistic().GetName().find("IVarInputEffectVideo,"),
              std::string::npos);
}

TEST_F(EffectBaseTest, EmptyEffectKeepsThePictureAndCounts) {
    auto const effect = CreateEmptyEffect(nullptr, context);
    EXPECT_EQ(effect->GetRefCount(), 1U);
    DataHandle const data = MakePicture();
    EXPECT_EQ(effect->ProcessData(std::vector<DataHandle>{data}), data);
    EXPECT_EQ(CountOf(*effect), "1");
}

TEST_F(EffectBaseTest, CustomRunsTheFunctionAndTakesTheReplacedHandleBack) {
    auto const effect = CreateCustom(nullptr, context);
    DataHandle const data = MakePicture();
    EXPECT_EQ(effect->ProcessData(std::vector<DataHandle>{data}), data); // no function: empty
    EXPECT_EQ(CountOf(*effect), "0");

    VideoHandle const other = MakeNoise(*context, PixFmt::GRAY8, 2, 2);
    effect->SetSettings(SettingsEffectCustom([other](VideoHandle& picture) { picture = other; }));
    DataHandle const result = effect->ProcessData(std::vector<DataHandle>{data});
    EXPECT_EQ(result, other);
    EXPECT_EQ(result->GetTimeStamp(), 1000);
}

TEST_F(EffectBaseTest, CustomKeepsItsFunctionThroughItsOwnSettingsAndThroughAReset) {
    auto const effect = CreateCustom(nullptr, context);
    int calls = 0;
    effect->SetSettings(SettingsEffectCustom([&](VideoHandle&) {
        effect->ResetSettings(); // the running copy lives on
        ++calls;
    }));
    effect->SetSettings(effect->GetSettingsBase());
    DataHandle const data = MakePicture();
    effect->ProcessData(std::vector<DataHandle>{data});
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(effect->GetSettingsBase().IsEmpty());
    EXPECT_THROW(
        {
            effect->SetSettings(SettingsEffectCustom([](VideoHandle&) { throw std::out_of_range("caller's"); }));
            effect->ProcessData(std::vector<DataHandle>{data});
        },
        std::out_of_range);
    EXPECT_EQ(CountOf(*effect), "1");
}

} // namespace
} // namespace Velnor::Proc
