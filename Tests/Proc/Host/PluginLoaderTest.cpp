#include "Proc/Host/PluginLoader.h"
#include "Proc/Host/Registry.h"
#include "Proc/Interfaces/ProcException.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace Velnor::Proc {
namespace {

namespace fs = std::filesystem;

fs::path const FOLDER = VELNOR_TEST_PLUGINS;

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
    std::vector<std::string> const loaded{hostsOwn[0], "SettingsTestSecond Test two-input GoodPlugin.so",
                                          "SettingsTestFirst Test one-input GoodPlugin.so"};
    EXPECT_EQ(List(registry), loaded);
    EXPECT_FALSE(registry.FindOneInputEffect("SettingsTestFirst", "Test")({}, {})) << "the library is still there";

    std::string const again = ErrorOfLoading(FOLDER / "GoodPlugin.so", registry);
    EXPECT_NE(again.find("\"SettingsTestSecond\" has an implementation \"Test\" already, registered by GoodPlugin.so"),
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

    fs::path const text = fs::path(testing::TempDir()) / "VelnorText.so";
    std::ofstream(text) << "This is a text, long enough to hold the header of a library, which it has not.\n";
    EXPECT_EQ(ReasonAgainst(text), "invalid ELF header.");
    fs::remove(text);
    EXPECT_NE(ReasonAgainst(FOLDER).find("directory"), std::string::npos);
}

TEST_F(PluginLoaderTest, AFailedPluginDoesNotHinderTheNext) {
    ReasonAgainst(FOLDER / "ThrowingPlugin.so");
    LoadPluginFile(FOLDER / "GoodPlugin.so", registry);
    EXPECT_EQ(registry.GetAll().size(), 3U);
}

} // namespace
} // namespace Velnor::Proc
