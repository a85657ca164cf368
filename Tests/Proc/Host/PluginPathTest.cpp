// Where plug-ins of the user are looked for, and which of them are refused.

#include "Proc/Host/PluginPath.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/Places.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

#include <unistd.h>

namespace Velnor::Proc {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

/// An environment variable with another value, while it lives.
class Variable {
public:
    Variable(char const* variable, std::string const& value) : name(variable) {
        if (char const* const old = std::getenv(name)) before = old;
        setenv(name, value.c_str(), 1);
    }
    ~Variable() { before ? setenv(name, before->c_str(), 1) : unsetenv(name); }
    Variable(Variable const&) = delete;
    Variable& operator=(Variable const&) = delete;

private:
    char const* const name;
    std::optional<std::string> before;
};

class PluginPathTest : public testing::Test {
protected:
    PluginPathTest() {
        fs::remove_all(top);
        fs::create_directories(top / "share/velnor/plugins");
    }
    ~PluginPathTest() override { fs::remove_all(top); }

    fs::path MakeFile(std::string const& name) const {
        fs::create_directories((top / name).parent_path());
        std::ofstream(top / name) << "no library";
        return top / name;
    }
    static PluginPath FindIn(std::string const& path) {
        Variable const variable("VELNOR_PLUGIN_PATH", path);
        return FindUserPlugins();
    }

    fs::path const top = fs::canonical(testing::TempDir()) / ("VelnorPath" + std::to_string(getpid()));
    Variable const data{"XDG_DATA_HOME", top / "share"};
};

TEST_F(PluginPathTest, TakesTheFoldersInTheirOrderAndTheUsersOwnLast) {
    fs::path const own = MakeFile("share/velnor/plugins/a.so");
    fs::path const second = MakeFile("b/z.so");
    fs::path const third = MakeFile("c/b.so");
    fs::path const fourth = MakeFile("c/c.so");
    MakeFile("c/readme.txt");
    fs::create_symlink(second, top / "c/again.so");
    PluginPath const found = FindIn((top / "b").string() + "::" + (top / "c").string() + ":");
    EXPECT_THAT(found.files, ElementsAre(second, third, fourth, own));
    EXPECT_THAT(found.refusals, IsEmpty());

    Variable const home("HOME", top / "home");
    fs::path const inHome = MakeFile("home/.local/share/velnor/plugins/h.so");
    for (char const* const unset : {"", "share"}) { // A relative one does not count.
        Variable const none("XDG_DATA_HOME", unset);
        EXPECT_THAT(FindIn("").files, ElementsAre(inHome));
    }
}

TEST_F(PluginPathTest, RefusesWhatOthersCanWriteTo) {
    fs::path const sound = MakeFile("sound/a.so");
    fs::path const open = MakeFile("open/a.so");
    fs::path const inner = MakeFile("above/inner/a.so");
    fs::path const shared = MakeFile("sticky/inner/a.so");
    fs::path const file = MakeFile("sound/b.so");
    fs::create_symlink(open, top / "sound/c.so");
    fs::permissions(top / "open", fs::perms::all);
    fs::permissions(top / "above", fs::perms::all);
    fs::permissions(top / "sticky", fs::perms::all | fs::perms::sticky_bit);
    fs::permissions(file, fs::perms::all);
    std::string const path = (top / "open").string() + ":" + (top / "above/inner").string() + ":" +
                             (top / "sticky").string() + ":" + (top / "sticky/inner").string() + ":" +
                             (top / "sound").string() + ":" + (top / "missing").string() + ":plugins";
    PluginPath const found = FindIn(path);
    EXPECT_THAT(found.files, ElementsAre(shared, sound));
    auto const refusal = [&](std::string const& place, std::string const& reason) {
        return "Plug-ins of " + place + " are not loaded: " + reason + ".";
    };
    EXPECT_THAT(found.refusals,
                ElementsAre(refusal(top / "open", "it may be written to by everybody"),
                            refusal(top / "above/inner", (top / "above").string() + " may be written to by everybody"),
                            refusal(top / "sticky", "it may be written to by everybody"),
                            refusal(top / "sound/b.so", "it may be written to by everybody"),
                            refusal(top / "sound/c.so", (top / "open").string() + " may be written to by everybody"),
                            refusal(top / "missing", "No such file or directory"),
                            refusal("plugins", "it is no absolute path")));
}

TEST_F(PluginPathTest, RefusesWhatBelongsToAnotherUser) {
    constexpr uid_t SOMEBODY = 12345;
    fs::path const file = MakeFile("theirs/a.so");
    fs::path const lent = MakeFile("lent/a.so");
    if (chown((top / "theirs").c_str(), SOMEBODY, SOMEBODY) != 0 || chown(lent.c_str(), SOMEBODY, SOMEBODY) != 0)
        GTEST_SKIP() << "only root can give files away";
    PluginPath const found = FindIn((top / "theirs").string() + ":" + (top / "lent").string());
    EXPECT_THAT(found.files, IsEmpty());
    EXPECT_THAT(found.refusals,
                ElementsAre("Plug-ins of " + (top / "theirs").string() + " are not loaded: it belongs to another user.",
                            "Plug-ins of " + lent.string() + " are not loaded: it belongs to another user."));
}

TEST_F(PluginPathTest, ABrokenPluginDoesNotHinderTheOthers) {
    fs::path const folder = top / "share/velnor/plugins";
    MakeFile("share/velnor/plugins/a.so");
    fs::copy_file(fs::path(Testing::TEST_PLUGINS) / "GoodPlugin.so", folder / "b.so");
    fs::copy_file(fs::path(Testing::TEST_PLUGINS) / "ThrowingPlugin.so", folder / "c.so");
    StandardHost host;
    EXPECT_FALSE(host.HasPlugin(folder / "b.so"));
    EXPECT_THAT(host.LoadUserPlugins(),
                ElementsAre(testing::HasSubstr((folder / "a.so").string() + " cannot be loaded: it is damaged"),
                            testing::HasSubstr("c.so cannot be loaded: its Registrator failed")));
    EXPECT_TRUE(host.HasPlugin(folder / "b.so"));
    EXPECT_EQ(host.GetEffects().back().origin, folder / "b.so");
    EXPECT_THAT(host.LoadUserPlugins(), testing::SizeIs(2)) << "those that are loaded are left alone";
}

} // namespace
} // namespace Velnor::Proc
