// `velnor check` on a plug-in whose effects each break a promise, and as it is called.

#include "Tests/Tools/RunCommand.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>

namespace Velnor::Tool::Testing {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;
using Words = std::vector<std::string>;

CommandResult Check(Words arguments) {
    arguments.insert(arguments.begin(), "check");
    return RunCommand(arguments, std::filesystem::temp_directory_path());
}

/// The findings of each effect, as "promise: where: what".
std::map<std::string, Words> ListFindings(std::string const& text) {
    Json const document = Json::parse(text);
    std::map<std::string, Words> findings;
    for (Json const& effect : document["effects"]) {
        Words& lines = findings[effect["name"].get<std::string>()];
        for (Json const& finding : effect["broken"])
            lines.push_back(finding["promise"].get<std::string>() + ": " + finding["where"].get<std::string>() + ": " +
                            finding["what"].get<std::string>());
    }
    return findings;
}

TEST(Check, NamesEachEffectThatBreaksAPromise) {
    CommandResult const result = Check({VELNOR_BROKEN_PLUGIN, "--time-limit", "10", "--json"});
    EXPECT_EQ(result.code, 4);
    auto const findings = ListFindings(result.out);
    struct Expected {
        std::string effect, finding;
    };
    for (auto const& [effect, finding] : std::vector<Expected>{
             {"writes-past-rows", "formats: yuv420p 1 x 1: writes past the rows of a picture"},
             {"writes-to-shared", "formats: yuv420p 1 x 1: the memory that the caller shares has changed"},
             {"keeps-state", "same-bytes: rgb24 33 x 21: other bytes the second time"},
             {"only-new-sizes", "same-bytes: rgb24 33 x 21: other bytes the second time"},
             {"only-new-sizes", "independence: rgb24 33 x 21: other bytes after other photographs"},
             {"differs-each-time", "same-bytes: rgb24 33 x 21: other bytes from another instance"},
             {"leaves-unwritten", "same-bytes: rgb24 33 x 21: other bytes the second time"},
             {"spoils-before-refusal", "changes the caller's picture before it refuses it"},
             {"spoils-before-failure", "errors: rgb24 33 x 21, call 1 fails: the caller's picture is not as before"},
             {"keeps-half-a-cache", "fails: makes of the next picture what a new effect does not"},
             {"never-asks", "stop: rgb24 96 x 70, stop at question 1: reports progress and never asks"},
             {"works-on", "stop: rgb24 96 x 70, stop at question 1: is told to stop and works on"},
             {"starts-threads", "threads: rgb24 640 x 480: starts threads of its own"},
             {"leaves-threads", "threads: rgb24 640 x 480: leaves threads behind"},
             {"crashes", "formats: gray8 3 x 5: died by signal 6"},
             {"exits", "formats: nv12 1 x 1: ended the process with exit code 7"},
             {"hangs", "formats: ya8 1 x 1: hangs: nothing for 10 s"},
             {"shows-hidden", "alpha: rgba 48 x 36: colours of clear pixels show"},
             {"throws-other", "formats: yuv420p 1 x 1: throws what is no ProcException: vector::at"},
             {"refuses-all", "formats: all formats and sizes: every picture is refused: This is never done."},
             {"bad-settings", "settings: strength: the default is no value of the parameter"},
             {"bad-settings", "settings: mute: the parameter has no help"},
             {"fails-at-end", "ranges: strength=100: died by signal 6"},
             {"other-kind",
              "registration: class SettingsEffectOtherKind, implementation Velnor: it is of another kind"},
             {"ignores-bypass", "bypass: bypass=true, rgb24 9 x 7: the result is not the picture that came"}}) {
        SCOPED_TRACE(effect + " " + finding);
        ASSERT_TRUE(findings.contains(effect));
        EXPECT_THAT(findings.at(effect), testing::Contains(HasSubstr(finding)));
    }
    EXPECT_THAT(findings.at("sound"), testing::IsEmpty());
    // What comes after a promise that ended the process is checked all the same.
    EXPECT_THAT(findings.at("crashes"), testing::SizeIs(1));
}

TEST(Check, PrintsALineForEachFindingAndOneAtTheEnd) {
    CommandResult const broken = Check({VELNOR_BROKEN_PLUGIN, "--effect", "throws-other", "--level", "1"});
    EXPECT_EQ(broken.code, 4);
    EXPECT_EQ(broken.error, "");
    EXPECT_THAT(broken.out, StartsWith("throws-other/velnor: formats: yuv420p 1 x 1: throws what is no ProcException: "
                                       "vector::at (and 37 more)\n"));
    EXPECT_THAT(broken.out, HasSubstr("\nBrokenPlugin.so: 1 effect checked at level 1, 1 of them breaks a promise\n"));

    CommandResult const sound = Check({VELNOR_BROKEN_PLUGIN, "--effect", "sound", "--level", "3"});
    EXPECT_EQ(sound.code, 0);
    EXPECT_EQ(sound.out, "BrokenPlugin.so: 1 effect checked at level 3, no promise is broken\n");

    CommandResult const skipped = Check({VELNOR_BROKEN_PLUGIN, "--effect", "starts-threads", "--skip", "threads"});
    EXPECT_EQ(skipped.code, 0) << skipped.out;
}

TEST(Check, SaysWhyAPluginCannotBeChecked) {
    std::string const folder = VELNOR_TEST_PLUGINS;
    struct Case {
        Words arguments;
        int code;
        std::string line;
    };
    for (auto const& [arguments, code, line] : std::vector<Case>{
             {{}, 2, "velnor: check: no plug-in is given\n"},
             {{"missing.so"}, 3, "velnor: check: there is no plug-in missing.so\n"},
             {{VELNOR_BROKEN_PLUGIN, "--effect", "crash"}, 2, "has no effect \"crash\"; did you mean crashes?\n"},
             {{VELNOR_BROKEN_PLUGIN, "--skip", "thread"}, 2, "there is no promise \"thread\"; did you mean threads?\n"},
             {{VELNOR_BROKEN_PLUGIN, "--level", "4"}, 2, "4 is outside the range 1 to 3\n"},
             {{folder + "/NoEntry.so"},
              4,
              "registration: Plug-in " + folder + "/NoEntry.so cannot be loaded: it has no"},
             {{folder + "/DyingPlugin.so"}, 4, "registration: died by signal 6 (Aborted)\n"},
             {{folder + "/DyingPlugin.so", "--json"}, 4, "\"error\": \"died by signal 6 (Aborted)\""},
             {{folder + "/StrangePlugin.so"}, 4, "it links to none of the libraries of the contract"},
             {{folder + "/GoodPlugin.so", "--effect", "test-first"}, 4, "returned null"}}) {
        SCOPED_TRACE(line);
        CommandResult const result = Check(arguments);
        EXPECT_EQ(result.code, code);
        EXPECT_THAT(result.out + result.error, HasSubstr(line));
    }
}

} // namespace
} // namespace Velnor::Tool::Testing
