#include "Proc/Host/OutputFile.h"

#include "Proc/Host/PictureFile.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <iterator>
#include <string>

namespace Velnor::Proc::Testing {
namespace {

namespace fs = std::filesystem;

class OutputFileTest : public ::testing::TestWithParam<OutputFile::Temporary> {
protected:
    fs::path In(std::string const& name) const { return folder.GetPath() / name; }

    void Write(std::string const& name, std::string const& content, bool overwrite) const {
        OutputFile file(In(name), overwrite, GetParam());
        file.Write(content.data(), content.size());
        file.Commit();
    }

    /// Runs an action in a process of its own and returns how that ended, as waitpid tells.
    template <class Action>
    static int RunInChild(Action const& action) {
        pid_t const child = fork();
        if (child == 0) {
            action();
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return status;
    }

    TemporaryFolder const folder;
};

TEST_P(OutputFileTest, AppearsAtCommitAndNotBefore) {
    {
        OutputFile file(In("a"), false, GetParam());
        file.Write("new", 3);
        EXPECT_FALSE(fs::exists(In("a")));
        file.Commit();
        EXPECT_EQ(folder.Read("a"), "new");
    }
    EXPECT_EQ(folder.Read("a"), "new");
    { OutputFile(In("b"), false, GetParam()).Write("dropped", 7); }
    EXPECT_EQ(folder.CountFiles(), 1U);
}

TEST_P(OutputFileTest, ReplacesOnlyWhenAsked) {
    folder.Write("a", "old");
    ASSERT_EQ(chmod(In("a").c_str(), 0640), 0);
    EXPECT_THROW(Write("a", "new", false), FileOutputException);
    EXPECT_EQ(folder.Read("a"), "old");
    {
        OutputFile late(In("b"), false, GetParam());
        late.Write("late", 4);
        folder.Write("b", "meanwhile");
        EXPECT_THROW(late.Commit(), FileOutputException);
    }
    EXPECT_EQ(folder.Read("b"), "meanwhile");
    Write("a", "new", true);
    EXPECT_EQ(folder.Read("a"), "new");
    EXPECT_EQ(fs::status(In("a")).permissions(), static_cast<fs::perms>(0640));
    EXPECT_EQ(folder.CountFiles(), 2U);
}

TEST_P(OutputFileTest, NewFilesFollowTheUmask) {
    mode_t const before = umask(0027);
    Write("a", "x", false);
    umask(before);
    EXPECT_EQ(fs::status(In("a")).permissions(), static_cast<fs::perms>(0640));
}

TEST_P(OutputFileTest, ALinkStaysAndWhatItLeadsToIsReplaced) {
    fs::create_directory(In("far"));
    folder.Write("far/a", "old");
    fs::create_symlink("far/a", In("link"));
    Write("link", "new", true);
    EXPECT_TRUE(fs::is_symlink(In("link")));
    EXPECT_EQ(folder.Read("far/a"), "new");
    fs::create_symlink("nowhere", In("broken"));
    EXPECT_THROW(Write("broken", "new", false), FileOutputException);
    EXPECT_THROW(Write("broken", "new", true), FileOutputException);
}

TEST_P(OutputFileTest, RefusesWhatIsNoRegularFile) {
    EXPECT_THROW(Write("", "x", true), FileOutputException);
    EXPECT_THROW(Write("missing/a", "x", true), FileOutputException);
    fs::create_directory(In("folder"));
    EXPECT_THROW(Write("folder", "x", true), FileOutputException);
    ASSERT_EQ(mkfifo(In("pipe").c_str(), 0600), 0);
    EXPECT_THROW(Write("pipe", "x", true), FileOutputException);
    EXPECT_EQ(folder.CountFiles(), 2U);
}

TEST_P(OutputFileTest, NoRoomLeavesTheOldFile) {
    folder.Write("a", "old");
    int const status = RunInChild([this] {
        // A limit on file sizes fails a write in the middle, as a full disk does.
        signal(SIGXFSZ, SIG_IGN);
        rlimit const limit{10'000, 10'000};
        setrlimit(RLIMIT_FSIZE, &limit);
        try {
            Write("a", std::string(20'000, 'x'), true);
        } catch (FileOutputException const&) {
            _exit(7);
        }
    });
    EXPECT_EQ(WEXITSTATUS(status), 7);
    EXPECT_EQ(folder.Read("a"), "old");
    EXPECT_EQ(folder.CountFiles(), 1U);
}

TEST_P(OutputFileTest, AKilledWriterLeavesTheOldFileAndTheNextRunClearsUp) {
    bool const isNamed = GetParam() == OutputFile::Temporary::Named;
    folder.Write("a", "old");
    int const status = RunInChild([this] {
        OutputFile file(In("a"), true, GetParam());
        file.Write("half", 4);
        raise(SIGKILL);
    });
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
    EXPECT_EQ(folder.Read("a"), "old");
    EXPECT_EQ(folder.CountFiles(), isNamed ? 2U : 1U);
    // What is not ours or not dead stays: of another machine, of a process that runs, a file of another name, a folder.
    std::string const self = std::to_string(getpid());
    for (std::string const& name : {std::string(".velnor-elsewhere-1-0.tmp"), ".velnor-" + self + "-0.tmp",
                                    std::string(".velnor-notes"), std::string(".velnor-old-1-0.tmp")})
        folder.Write(name, "x");
    fs::create_directory(In(".velnor-1-2.tmp"));
    fs::last_write_time(In(".velnor-old-1-0.tmp"), fs::file_time_type::clock::now() - std::chrono::hours(25));
    int const living = RunInChild([this] {
        OutputFile const file(In("a"), true, OutputFile::Temporary::Named); // It is locked.
        if (folder.CountFiles() != 6) _exit(1);
        Write("./b", "new", false); // By another name of the folder, since each is looked through once.
        if (folder.CountFiles() != 7) _exit(2);
    });
    EXPECT_EQ(living, 0);
    EXPECT_EQ(folder.CountFiles(), 6U) << "a, b and the four";
    EXPECT_FALSE(fs::exists(In(".velnor-old-1-0.tmp")));
}

INSTANTIATE_TEST_SUITE_P(Both, OutputFileTest,
                         ::testing::Values(OutputFile::Temporary::Unnamed, OutputFile::Temporary::Named),
                         [](auto const& instance) {
                             return instance.param == OutputFile::Temporary::Unnamed ? "Unnamed" : "Named";
                         });

} // namespace
} // namespace Velnor::Proc::Testing
