// What every effect promises, the plug-in's and the host's alike: the checks of `velnor check`, on all of the registry.

#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Interfaces/SettingsText.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/Places.h"
#include "Tests/Support/Refusal.h"
#include "Tests/Support/RegisteredEffects.h"
#include "Tools/check/CheckPlugin.h"
#include "Tools/check/Promises.h"

#include <gtest/gtest.h>

namespace Velnor::Proc {
namespace {

// Random calls take minutes under the thread sanitizer, and start no threads of their own.
#ifdef __SANITIZE_THREAD__
constexpr int LEVEL = 2;
#else
constexpr int LEVEL = 3;
#endif

Host& GuardedHost() {
    static StandardHost host{Check::GuardedMemory([](std::string const& what) { ADD_FAILURE() << what; })};
    static bool const isLoaded = (host.LoadPlugin(Testing::LUMETTA_FILE), true);
    (void)isLoaded;
    return host;
}

class Expectations : public Check::Journal {
public:
    void Begin(std::string const& where) override { place = where; }
    void Break(std::string const& what) override { ADD_FAILURE() << place << ": " << what; }

private:
    std::string place;
};

class EveryEffect : public ::testing::TestWithParam<RegisteredEffect> {};

TEST_P(EveryEffect, KeepsItsPromises) {
    bool const isPlugins = GetParam().origin != "host";
    Check::Subject const subject(GuardedHost(), GetParam(), LEVEL, isPlugins ? Testing::LUMETTA_FILE : "");
    Expectations expectations;
    for (Check::Promise const& promise : Check::GetPromises()) {
        if (promise.level > LEVEL || !Check::FindWaiver(GetParam(), promise).empty()) continue;
        SCOPED_TRACE(promise.name);
        promise.check(subject, expectations);
    }
}

TEST_P(EveryEffect, RefusesByNameWhatAFieldDoesNotAcceptAndTouchesNothing) {
    Check::Subject const subject(GuardedHost(), GetParam(), LEVEL);
    std::vector<DataHandle> const inputs = subject.MakeInputs(PixFmt::BGR24, 24, 18);
    std::vector<Check::Sight> const before = Check::SeeAll(inputs);
    for (SettingsField const& field : subject.GetType().describe()) {
        if (!field.accepts || field.type == "size") continue;
        for (double const beyond : {field.accepts->low - 1, field.accepts->high + 1}) {
            auto const settings = subject.MakeTypicalSettings();
            std::string const value = TextForm<double>::Print(beyond);
            try {
                field.parseAny(*settings, value);
            } catch (SettingsTextException const&) {
                continue; // More than the type holds.
            }
            if (field.accepts->IsMet(beyond)) continue; // An open end.
            auto const effect = subject.Make(*settings);
            std::string const start = "The setting " + field.name + " is " + value;
            std::string const refusal =
                Testing::RefusalOf<EffectException>([&] { effect->ProcessData(std::vector<DataHandle>(inputs)); });
            EXPECT_EQ(refusal.substr(0, start.size()), start);
            EXPECT_TRUE(Check::SeeAll(inputs) == before);
            EXPECT_EQ(effect->GetStatistic().FindChild("Count")->GetValue(), "0");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Registry, EveryEffect, ::testing::ValuesIn(GuardedHost().GetEffects()), Testing::TestName);

} // namespace
} // namespace Velnor::Proc
