#include "Proc/Host/PluginLoader.h"
#include "Proc/Host/NeededLibraries.h"
#include "Proc/Host/Registry.h"
#include "Proc/Interfaces/ProcException.h"
#include "Tests/Support/Places.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace Velnor::Proc {
namespace {

namespace fs = std::filesystem;

fs::path const FOLDER = Testing::TEST_PLUGINS;

intrusive_ptr<IEffect> MakeNothing(FactoryHandle const&, ContextHandle const&) { return {}; }

std::vector<std::string> List(Registry const& registry) {
    std::vector<std::string> lines;
    for (Registration const& entry : registry.GetAll())
        lines.push_back(entry.effect.classId + " " + entry.effect.implName + " " + GetKindName(entry.effect.kind) +
                        " " + entry.effect.origin);
    return lines;
}

std::string ErrorOfLoading(fs::path const& file, Registry& registry) {
    try {
        LoadPluginFile(file, registry);
    } catch (ProcException const& error) {
        return DescribeException(error);
    }
    return "no exception";
}

class PluginLoaderTest : public testing::Test {
protected:
    PluginLoaderTest() { registry.RegisterVarInputEffect("SettingsTestThird", "Test", MakeNothing, nullptr); }

    /// The reason that is given for a plug-in that must not load, after what every message begins with.
    std::string ReasonAgainst(fs::path const& file) {
        std::string const error = ErrorOfLoading(file, registry);
        EXPECT_EQ(List(registry), hostsOwn);
        EXPECT_EQ(error.find('\n'), std::string::npos);
        std::string const begin = "Plug-in " + file.string() + " cannot be loaded: ";
        return error.starts_with(begin) ? error.substr(begin.size()) : "another beginning: " + error;
    }

    Registry registry{"host"};
    std::vector<std::string> const hostsOwn{"SettingsTestThird Test var-input host"};
};

TEST_F(PluginLoaderTest, MergesWhatAPluginRegisters) {
    LoadPluginFile(FOLDER / "GoodPlugin.so", registry);
    std::string const path = (FOLDER / "GoodPlugin.so").string();
    std::vector<std::string> const loaded{hostsOwn[0], "SettingsTestSecond Test two-input " + path,
                                          "SettingsTestFirst Test one-input " + path};
    EXPECT_EQ(List(registry), loaded);
    EXPECT_FALSE(registry.FindOneInputEffect("SettingsTestFirst", "Test")({}, {})) << "the library is still there";

    std::string const again = ErrorOfLoading(FOLDER / "GoodPlugin.so", registry);
    EXPECT_NE(again.find("\"SettingsTestSecond\" has an implementation \"Test\" already, registered by " + path),
              std::string::npos)
        << again;
    EXPECT_EQ(List(registry), loaded);
}

TEST_F(PluginLoaderTest, APluginThatClashesLeavesNoTrace) {
    Registry other("host");
    other.RegisterOneInputEffect("SettingsTestFirst", "Test", MakeNothing, nullptr); // Its second registration.
    std::vector<std::string> const before = List(other);
    EXPECT_NE(ErrorOfLoading(FOLDER / "GoodPlugin.so", other), "no exception");
    EXPECT_EQ(List(other), before);
}

TEST_F(PluginLoaderTest, SaysWhatIsWrongAndLeavesTheRegistry) {
    EXPECT_EQ(ReasonAgainst(FOLDER / "Missing.so"), "there is no such file.");
    EXPECT_EQ(ReasonAgainst("GoodPlugin.so"), "there is no such file.") << "names are not looked up elsewhere";
    EXPECT_EQ(ReasonAgainst(""), "there is no such file.");
    EXPECT_EQ(ReasonAgainst(FOLDER / "NoEntry.so"), "it has no entry Registrator, so it is no plug-in.");
    EXPECT_EQ(ReasonAgainst(FOLDER / "ThrowingPlugin.so"), "its Registrator failed: the second effect has no table");

    EXPECT_EQ(ReasonAgainst(FOLDER / "EmptyPlugin.so"), "its Registrator registered no effect.");
    EXPECT_EQ(ReasonAgainst(FOLDER), "it is a directory.");
}

TEST_F(PluginLoaderTest, APluginOfAnotherContractIsRefusedBeforeAnyOfItRuns) {
    std::string const ours = "), and this host has version " VELNOR_CONTRACT ".";
    std::string const theirs = "it was built against the contract ";
    EXPECT_EQ(ReasonAgainst(FOLDER / "PastPlugin.so"), theirs + "without a version (it needs libVelnorProc.so" + ours);
    EXPECT_EQ(ReasonAgainst(FOLDER / "FuturePlugin.so"), theirs + "version 99 (it needs libVelnorCore.so.99" + ours);
    EXPECT_EQ(ReasonAgainst(FOLDER / "LostPlugin.so"), theirs + "version 98 (it needs libVelnorHost.so.98" + ours);
    EXPECT_EQ(ReasonAgainst(FOLDER / "StrangePlugin.so"),
              "it links to none of the libraries of the contract, such as libVelnorProc.so." VELNOR_CONTRACT
              ", so it is no plug-in for this host.");
}

TEST_F(PluginLoaderTest, DamagedFilesAreRefused) {
    fs::path const file = fs::path(testing::TempDir()) / "VelnorDamaged.so";
    auto const write = [&](std::string const& content) { std::ofstream(file, std::ios::binary) << content; };
    write("This is a text, long enough to hold the header of a library, which it has not.\n");
    EXPECT_EQ(ReasonAgainst(file), "it is no shared library.");
    std::ifstream plugin(FOLDER / "PastPlugin.so", std::ios::binary);
    std::string const whole{std::istreambuf_iterator<char>(plugin), {}};
    for (std::size_t length = 0; length < whole.size(); length += 397) {
        write(whole.substr(0, length));
        EXPECT_NE(ErrorOfLoading(file, registry), "no exception") << length;
    }
    for (std::size_t at = 0; at < whole.size(); at += at < 64 ? 1 : 61) {
        std::string damaged = whole;
        damaged[at] = static_cast<char>(~damaged[at]);
        write(damaged);
        try {
            EXPECT_LT(ReadNeededLibraries(file).size(), whole.size());
        } catch (ProcException const&) {
        }
    }
    fs::remove(file);
}

TEST_F(PluginLoaderTest, AFailedPluginDoesNotHinderTheNext) {
    ReasonAgainst(FOLDER / "ThrowingPlugin.so");
    LoadPluginFile(FOLDER / "GoodPlugin.so", registry);
    EXPECT_EQ(registry.GetAll().size(), 3U);
}

} // namespace
} // namespace Velnor::Proc
