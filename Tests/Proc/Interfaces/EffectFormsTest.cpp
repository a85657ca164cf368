#include "Proc/Interfaces/IEffectFactory.h"
#include "Proc/Settings/SettingsEffectEmpty.h"
#include "Tests/Support/FakePicture.h"

#include <gtest/gtest.h>

namespace Velnor::Proc {
namespace {

using Tests::FakePicture;
using Inputs = std::vector<DataHandle>;

/// What every effect has to have and these tests do not ask about.
template <class Kind>
class Bare : public Kind {
public:
    using Kind::ProcessData;
    void SetSettings(Settings const&) override {}
    void Flush() override {}
    void ResetSettings() override {}
    Core::Property GetStatistic() override { return Core::Property("bare"); }
    Settings const& GetSettingsBase() const override { return settings; }

private:
    SettingsEffectEmpty settings;
};

DataHandle Grey() { return MakeShared<FakePicture>(PixFmt::GRAY8, 1U, 1U); }

class ReplacingOne : public Bare<IOneInputEffectVideo> {
public:
    using Bare::ProcessData;
    void ProcessData(DataHandle& data) override { data = replacement; }
    DataHandle replacement = Grey();
};

class ReplacingTwo : public Bare<ITwoInputEffectVideo> {
public:
    using Bare::ProcessData;
    void ProcessData(DataHandle& first, ConstDataHandle const& second) override {
        seenFirst = first;
        seenSecond = second;
        first = replacement;
    }
    DataHandle replacement = Grey();
    DataHandle seenFirst;
    ConstDataHandle seenSecond;
};

class Last : public Bare<IVarInputEffectVideo> {
public:
    DataHandle Process(Inputs const& inputs) override { return inputs.empty() ? nullptr : inputs.back(); }
};

template <class Effect>
void ExpectCountRefused(Inputs const& inputs, char const* source) {
    intrusive_ptr<IEffect> const effect = MakeShared<Effect>();
    try {
        effect->ProcessData(inputs);
        FAIL() << inputs.size();
    } catch (std::logic_error const& error) {
        EXPECT_STREQ(error.what(), "invalid data count");
        ASSERT_NE(boost::get_error_info<boost::throw_file>(error), nullptr);
        EXPECT_STREQ(*boost::get_error_info<boost::throw_file>(error), source);
        EXPECT_GT(*boost::get_error_info<boost::throw_line>(error), 0);
        std::string const function = *boost::get_error_info<boost::throw_function>(error);
        EXPECT_NE(function.find("ProcessData("), std::string::npos) << function;
    }
}

TEST(EffectForms, WrongNumbersOfInputsAreRefusedWithTheirPlace) {
    for (std::size_t count : {0U, 2U, 3U})
        ExpectCountRefused<ReplacingOne>(Inputs(count), "Proc/Interfaces/IOneInputEffect");
    for (std::size_t count : {0U, 1U, 3U})
        ExpectCountRefused<ReplacingTwo>(Inputs(count), "Proc/Interfaces/ITwoInputEffect");
}

TEST(EffectForms, TheCallersVectorKeepsItsHandlesWhenTheEffectReplacesThem) {
    auto const one = MakeShared<ReplacingOne>();
    auto const two = MakeShared<ReplacingTwo>();
    DataHandle const first = Grey();
    DataHandle const second = Grey();
    Inputs const single{first};
    Inputs const pair{first, second};
    EXPECT_EQ(static_cast<IEffect&>(*one).ProcessData(single), one->replacement);
    EXPECT_EQ(single[0], first);
    EXPECT_EQ(static_cast<IEffect&>(*two).ProcessData(pair), two->replacement);
    EXPECT_EQ(two->seenFirst, first);
    EXPECT_EQ(two->seenSecond, second);
    EXPECT_EQ(pair, (Inputs{first, second}));
}

TEST(EffectForms, VarInputTakesAnyNumber) {
    intrusive_ptr<IEffect> const effect = MakeShared<Last>();
    DataHandle const last = Grey();
    EXPECT_EQ(effect->ProcessData(Inputs{}), nullptr);
    EXPECT_EQ(effect->ProcessData(Inputs{Grey(), Grey(), last}), last);
}

TEST(EffectForms, ProgressAlwaysHasAController) {
    intrusive_ptr<IEffect> const effect = MakeShared<ReplacingTwo>();
    EXPECT_TRUE(effect->GetProgress().controller);
    auto const controller = Core::ProgressController::Create();
    effect->SetProgressController(controller);
    EXPECT_EQ(effect->GetProgress().controller, controller);
    TimeToProgress next{nullptr, 5, 9};
    effect->SetProgress(next);
    ASSERT_TRUE(effect->GetProgress().controller);
    EXPECT_NE(effect->GetProgress().controller, controller);
    EXPECT_EQ(std::as_const(*effect).GetProgress().end, 9);
    effect->SetProgressController(nullptr);
    EXPECT_TRUE(effect->GetProgress().controller);
}

TEST(EffectForms, OneCounterServesEveryBaseOfAnEffect) {
    intrusive_ptr<IOneInputEffectVideo> effect = MakeShared<ReplacingOne>();
    intrusive_ptr<IEffect> const root = effect;
    intrusive_ptr<IRefCountable const> const counted = root;
    EXPECT_EQ(effect->GetRefCount(), 3U);
    effect.reset();
    EXPECT_EQ(counted->GetRefCount(), 2U);
}

} // namespace
} // namespace Velnor::Proc
