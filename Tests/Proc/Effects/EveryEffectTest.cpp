// What every effect promises, the plug-in's and the host's alike: the checks of `velnor check`, on all of the registry.

#include "Proc/StandardHost/StandardHost.h"
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
    static bool const isLoaded = (host.LoadPlugin(LUMETTA_FILE), true);
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
    Check::Subject const subject(GuardedHost(), GetParam(), LEVEL, isPlugins ? LUMETTA_FILE : "");
    Expectations expectations;
    for (Check::Promise const& promise : Check::GetPromises()) {
        if (promise.level > LEVEL || !Check::FindWaiver(GetParam(), promise).empty()) continue;
        SCOPED_TRACE(promise.name);
        promise.check(subject, expectations);
    }
}

INSTANTIATE_TEST_SUITE_P(Registry, EveryEffect, ::testing::ValuesIn(GuardedHost().GetEffects()), Testing::TestName);

} // namespace
} // namespace Velnor::Proc
