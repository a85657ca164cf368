// Many photographs in one call: found, worked on at once, left out, noted, and gone on with after whatever end.

#include "Proc/Host/PictureFile.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Tools/RunCommand.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/MemoryBudget.h"
#include "Tools/velnor/PhotoSearch.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <thread>

namespace Velnor::Tool::Testing {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using testing::UnorderedElementsAre;
using Words = std::vector<std::string>;

class BatchRunTest : public testing::Test {
protected:
    BatchRunTest() : folder(MakeScratchFolder()) {}
    ~BatchRunTest() override { fs::remove_all(folder); }

    /// A photograph of 40 x 32 pixels whose first sample is the level.
    void Make(std::string const& name, int level = 100) {
        fs::create_directories((folder / name).parent_path());
        auto const picture = host.GetContext()->CreateImage(PixFmt::RGB24, Proc::FrameFormat::Square(40, 32));
        picture->Fill(Proc::Color(20, 10, static_cast<unsigned char>(level), 255));
        Proc::WritePicture(folder / name, *picture, nullptr, {.overwrite = true});
    }
    void MakeText(std::string const& name, std::string const& text) {
        std::ofstream(folder / name, std::ios::binary) << text;
    }
    int FirstSample(std::string const& name) {
        return *Proc::ReadPicture(folder / name, *host.GetContext()).picture->GetPlane(0).GetRow(0);
    }

    std::set<std::string> Files(std::string const& below = ".") const {
        std::set<std::string> names;
        for (auto const& entry : fs::recursive_directory_iterator(folder / below))
            if (entry.is_regular_file()) names.insert(fs::relative(entry.path(), folder / below).string());
        return names;
    }

    CommandResult Apply(Words const& more) const {
        Words words{"apply"};
        words.insert(words.end(), more.begin(), more.end());
        return RunCommand(words, folder);
    }

    static std::vector<nlohmann::json> ParseLines(std::string const& text) {
        std::vector<nlohmann::json> lines;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) lines.push_back(nlohmann::json::parse(line));
        return lines;
    }

    /// "input action" of each photograph, as a dry run tells.
    std::vector<std::string> Foresee(Words words) const {
        words.insert(words.end(), {"--dry-run", "--json"});
        std::vector<std::string> lines;
        for (nlohmann::json const& line : ParseLines(Apply(words).out))
            lines.push_back(line["input"].get<std::string>() + " " + line["action"].get<std::string>());
        return lines;
    }

    Proc::StandardHost host;
    fs::path const folder;
};

TEST_F(BatchRunTest, ResultsComeInTheOrderOfThePhotographsAndFailuresStandByThemselves) {
    Words photos;
    std::string expected;
    for (int i = 0; i < 40; ++i) {
        std::string const name = "p" + std::to_string(i) + ".png";
        bool const isBad = i % 5 == 0;
        if (isBad)
            MakeText(name, i % 2 == 0 ? "no picture" : "");
        else
            Make(name, 50 + i);
        photos.push_back(name);
        if (!isBad) expected += name + ": probe: first-sample=" + std::to_string(50 + i) + "\n";
    }
    Words words = photos;
    words.insert(words.end(), {"-e", "probe", "-o", "out/", "--jobs", "4", "--plugin", VELNOR_PROBE_PLUGIN});
    CommandResult const result = Apply(words);
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.out, expected);
    std::istringstream errors(result.error);
    std::string line;
    for (int i = 0; i < 40; i += 5) { // Each with its own reason, whatever fails beside it.
        ASSERT_TRUE(std::getline(errors, line));
        EXPECT_THAT(line, StartsWith("velnor: p" + std::to_string(i) + ".png cannot be read: it is " +
                                     (i % 2 == 0 ? "no picture file" : "empty")));
    }
    EXPECT_FALSE(std::getline(errors, line));
    EXPECT_EQ(Files("out").size(), 32U);
    EXPECT_EQ(FirstSample("out/p39.png"), 89);
}

TEST_F(BatchRunTest, AStopEndsAllJobs) {
    for (int i = 0; i < 6; ++i) Make("p" + std::to_string(i) + ".png");
    RunningCommand run({"apply", "p0.png", "p1.png", "p2.png", "p3.png", "p4.png", "p5.png", "-e",
                        "probe:wait-marker=waiting", "-o", "out/", "-j3", "--json", "--plugin", VELNOR_PROBE_PLUGIN},
                       folder);
    while (!fs::exists(folder / "waiting")) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    run.Signal(SIGINT);
    CommandResult const result = run.Wait();
    EXPECT_EQ(result.code, 130);
    EXPECT_EQ(result.error, "velnor: stopped\n");
    for (nlohmann::json const& report : ParseLines(result.out)) EXPECT_EQ(report["code"], 130);
    EXPECT_FALSE(fs::exists(folder / "out"));
}

TEST_F(BatchRunTest, WhatIsLeftOutDependsOnWhatIsThere) {
    for (char const* name : {"a.png", "b.png", "c.png"}) Make(name, 100);
    Make("second.png");
    EXPECT_EQ(Apply({"a.png", "b.png", "-o", "out/"}).code, 0);
    EXPECT_THAT(Foresee({"a.png", "b.png", "c.png", "-o", "out/", "--skip-existing"}),
                ElementsAre("a.png skip", "b.png skip", "c.png write"));
    EXPECT_THAT(Foresee({"a.png", "c.png", "-o", "out/"}), ElementsAre("a.png fail", "c.png write"));
    EXPECT_THAT(Foresee({"a.png", "c.png", "gone.png", "-o", "out/", "-f"}),
                ElementsAre("a.png replace", "c.png write", "gone.png fail"));
    auto const age = [&](std::string const& name, int seconds) {
        fs::last_write_time(folder / name, fs::file_time_type::clock::now() - std::chrono::seconds(seconds));
    };
    for (char const* name : {"b.png", "c.png", "second.png"}) age(name, 100);
    age("a.png", 10);
    age("out/a.png", 50);
    age("out/b.png", 50);
    Words const update{"a.png", "b.png", "c.png", "-o", "out/", "--update"};
    EXPECT_THAT(Foresee(update), ElementsAre("a.png replace", "b.png skip", "c.png write"));
    EXPECT_EQ(Files("out").size(), 2U) << "a dry run makes nothing";
    Make("a.png", 7);
    CommandResult const done = Apply({"a.png", "b.png", "c.png", "-o", "out/", "--update", "--backup", "--json"});
    EXPECT_EQ(done.code, 0);
    EXPECT_EQ(ParseLines(done.out).at(1)["skipped"], "its output, out/b.png, is there");
    EXPECT_EQ(FirstSample("out/a.png"), 7);
    fs::rename(folder / "out/a.png.~1~", folder / "old.png");
    EXPECT_EQ(FirstSample("old.png"), 100);
    EXPECT_THAT(Foresee(update), ElementsAre("a.png skip", "b.png skip", "c.png skip"));
    // A further picture that has changed makes all of them old.
    Words more = update;
    more.insert(more.end(), {"-e", "image-blender:input=second.png"});
    EXPECT_THAT(Foresee(more), ElementsAre("a.png skip", "b.png skip", "c.png skip"));
    age("second.png", -100);
    EXPECT_THAT(Foresee(more), ElementsAre("a.png replace", "b.png replace", "c.png replace"));
    // So does a recipe that was written since.
    MakeText("look.json", R"({"version": 1, "name": "look", "effects": [{"effect": "pixelate"}]})");
    Words byRecipe = update;
    byRecipe.insert(byRecipe.end(), {"--recipe", "look.json"});
    for (auto const& [seconds, action] : {std::pair{100, "skip"}, {-100, "replace"}}) {
        age("look.json", seconds);
        EXPECT_EQ(Foresee(byRecipe).front(), std::string("a.png ") + action);
    }
    for (Words const& wrong : std::vector<Words>{{"--update", "--skip-existing"},
                                                 {"--update", "--force"},
                                                 {"--skip-existing", "--force"},
                                                 {"--backup"},
                                                 {"--jobs", "0"},
                                                 {"--format", "xyz"},
                                                 {"--progress", "loud"}}) {
        Words words{"a.png", "-o", "new.png"};
        words.insert(words.end(), wrong.begin(), wrong.end());
        EXPECT_EQ(Apply(words).code, 2) << wrong.front();
    }
}

TEST_F(BatchRunTest, NeitherAFileNorAnExtensionRefusesTheBatch) {
    Make("a.png");
    fs::copy(folder / "a.png", folder / "b.gif"); // Read by what it holds.
    Make("c.ppm");
    CommandResult const some = Apply({"a.png", "b.gif", "c.ppm", "-o", "out/", "--compression", "9"});
    EXPECT_EQ(some.code, 1);
    EXPECT_THAT(some.error, HasSubstr("out/b.gif cannot be written: the extension .gif is unknown"));
    EXPECT_THAT(some.error, HasSubstr("out/c.ppm cannot be written: such a file has no choice of compression"));
    EXPECT_THAT(Files("out"), UnorderedElementsAre("a.png"));
    EXPECT_EQ(Apply({"a.png", "b.gif", "c.ppm", "-o", "as/", "--format", "jpg"}).code, 0);
    EXPECT_THAT(Files("as"), UnorderedElementsAre("a.png", "b.jpg", "c.ppm"));
}

TEST_F(BatchRunTest, FindsPhotographsInFoldersListsAndGlobs) {
    for (char const* name : {"in/b.png", "in/a.PNG", "in/sub/c.png", "in/sub/deep/d.png", "in/out/old.png",
                             "in/.hidden.png", "in/thumbs/t.png", "x1.png", "x2.png", "@odd.png"})
        Make(name);
    MakeText("in/notes.txt", "no photograph");
    MakeText("lines.txt", "x2.png\r\n\nx1.png");
    MakeText("zeros.txt", std::string("x1.png\0in/b.png\0", 16));
    auto const find = [&](Words const& arguments, BatchOptions options) {
        fs::path const before = fs::current_path();
        fs::current_path(folder);
        PhotoNames const names = FindPhotos(arguments, options, "in/out/");
        fs::current_path(before);
        std::vector<std::string> found;
        PhotoNames::Reader reader(names);
        while (std::optional<PhotoName> const photo = reader.Next()) found.push_back(photo->path + "|" + photo->folder);
        return found;
    };
    BatchOptions all;
    all.isRecursive = true;
    EXPECT_THAT(find({"in", "x1.png"}, all),
                ElementsAre("in/a.PNG|", "in/b.png|", "in/sub/c.png|sub", "in/sub/deep/d.png|sub/deep",
                            "in/thumbs/t.png|thumbs", "x1.png|"));
    EXPECT_THAT(find({"@lines.txt", "@zeros.txt", "@odd.png", "x?.png"}, {}),
                ElementsAre("x2.png|", "x1.png|", "x1.png|", "in/b.png|", "@odd.png|", "x1.png|", "x2.png|"));
    all.exclude = {"thumbs", "sub/deep/*"};
    all.include = {"?.png"};
    EXPECT_THAT(find({"in"}, all), ElementsAre("in/a.PNG|", "in/b.png|", "in/sub/c.png|sub"));
    all.include = {"*.txt"};
    EXPECT_THAT(find({"in"}, all), ElementsAre("in/notes.txt|"));
    all.include = {"*.tif"};
    EXPECT_THROW(find({"in"}, all), Failure);
    EXPECT_THROW(find({"@none.txt"}, {}), Failure);

    CommandResult const tree = Apply({"-r", "in", "-o", "in/out/", "--exclude", "thumbs"});
    EXPECT_EQ(tree.code, 0) << tree.error;
    EXPECT_THAT(Files("in/out"), UnorderedElementsAre("a.PNG", "b.png", "old.png", "sub/c.png", "sub/deep/d.png"));
    EXPECT_EQ(Apply({"-r", "in/sub", "-o", "p/{folder}/{name}-{index}.png"}).code, 0);
    EXPECT_THAT(Files("p"), UnorderedElementsAre("c-1.png", "deep/d-2.png"));
    EXPECT_EQ(RunShell("find in/sub -name '*.png' -print0 | $VELNOR apply @- -o q/", folder).code, 0);
    EXPECT_THAT(Files("q"), UnorderedElementsAre("c.png", "d.png"));
}

TEST(PhotoNamesTest, AreGivenBackAsTheyCameWhereverTheyAreKept) {
    constexpr int COUNT = 150'000; // More than are kept in memory.
    PhotoNames names;
    auto const nameOf = [](int i) {
        return PhotoName{std::string(static_cast<std::size_t>(i % 700), 'x') + std::to_string(i),
                         i % 3 == 0 ? "" : "sub"};
    };
    for (int i = 0; i < COUNT; ++i) names.Add(nameOf(i));
    ASSERT_EQ(names.GetCount(), static_cast<std::size_t>(COUNT));
    for (int round = 0; round < 2; ++round) {
        PhotoNames::Reader reader(names);
        int same = 0;
        for (int i = 0; i < COUNT; ++i) same += reader.Next() == nameOf(i) ? 1 : 0;
        EXPECT_EQ(same, COUNT);
        EXPECT_EQ(reader.Next(), std::nullopt);
    }
}

TEST(MemoryBudgetTest, SharesFitAndALargeOneIsAlone) {
    std::atomic<int> held{0};
    std::atomic<int> users{0};
    std::atomic<int> faults{0};
    auto const stop = Core::ProgressController::Create();
    MemoryBudget budget(
        100, [] { return 0; }, [] {});
    auto const use = [&](int bytes) {
        for (int i = 0; i < 50; ++i) {
            MemoryBudget::Share share(budget);
            share.Take(static_cast<std::uint64_t>(bytes), *stop);
            int const now = held += bytes;
            int const count = ++users;
            if (count > 1 && now > 100) ++faults;
            std::this_thread::yield();
            --users;
            held -= bytes;
        }
    };
    {
        std::vector<std::jthread> threads;
        for (int const bytes : {30, 40, 50, 99, 500}) threads.emplace_back([&use, bytes] { use(bytes); });
    }
    EXPECT_EQ(faults, 0);
    // A stop lets everybody pass, who then look whether they may go on.
    MemoryBudget::Share first(budget);
    first.Take(90, *stop);
    stop->RequestStop();
    MemoryBudget::Share second(budget);
    second.Take(90, *stop);
}

/// What the journal has as done, and how often.
std::map<std::string, int> CountDone(fs::path const& journal) {
    std::map<std::string, int> counts;
    std::ifstream stream(journal);
    for (std::string line; std::getline(stream, line);) {
        nlohmann::json const entry = nlohmann::json::parse(line);
        if (entry["code"] == 0) ++counts[entry["input"].get<std::string>()];
    }
    return counts;
}

TEST_F(BatchRunTest, AKilledBatchGoesOnWithoutRedoingOrLosingOne) {
    constexpr int COUNT = 60;
    Words call{"apply", "-r", "in", "-o", "out/", "--journal", "out/journal", "-j2", "-e", "pixelate"};
    for (int i = 0; i < COUNT; ++i) Make("in/p" + std::to_string(i) + ".png", i);
    MakeText("in/bad.png", "no picture");
    ASSERT_EQ(RunCommand({"apply", "-r", "in", "-o", "want/", "-e", "pixelate"}, folder).code, 1);
    std::map<std::string, fs::file_time_type> written;
    auto const look = [&] { // No output is written a second time.
        if (!fs::exists(folder / "out")) return;
        for (std::string const& name : Files("out"))
            if (name.ends_with(".png")) {
                fs::file_time_type const time = fs::last_write_time(folder / "out" / name);
                EXPECT_EQ(written.emplace(name, time).first->second, time) << name;
            }
    };
    for (int kill = 0; kill < 8; ++kill) {
        RunningCommand run(call, folder);
        std::this_thread::sleep_for(std::chrono::milliseconds(40 + 23 * kill));
        run.Signal(SIGKILL);
        run.Wait();
        look();
        // As a write that was cut off leaves it.
        if (kill == 3 && fs::exists(folder / "out/journal"))
            std::ofstream(folder / "out/journal", std::ios::app) << R"({"input":"in/p0)";
    }
    EXPECT_EQ(RunCommand(call, folder).code, 1);
    look();
    EXPECT_EQ(RunCommand(call, folder).code, 1) << "the bad one is tried anew, the others are done";
    look();
    std::map<std::string, int> const counts = CountDone(folder / "out/journal");
    EXPECT_EQ(counts.size(), static_cast<std::size_t>(COUNT));
    EXPECT_TRUE(std::ranges::all_of(counts, [](auto const& entry) { return entry.second == 1; }));
    for (std::string const& name : Files("want")) EXPECT_EQ(FirstSample("out/" + name), FirstSample("want/" + name));
    fs::remove(folder / "in/bad.png");
    EXPECT_EQ(RunCommand(call, folder).code, 0);
    EXPECT_EQ(Files("out").size(), COUNT + 1U) << "photographs and journal, no stray and no note of what was begun";
}

TEST_F(BatchRunTest, TheJournalKnowsWhatHasChanged) {
    for (char const* name : {"a.png", "b.png"}) Make(name, 50);
    Words const call{"a.png", "b.png", "-o", "out/", "--journal", "j"};
    auto const with = [&](Words const& more) {
        Words words = call;
        words.insert(words.end(), more.begin(), more.end());
        return Foresee(words);
    };
    ASSERT_EQ(Apply(call).code, 0);
    std::string text;
    std::getline(std::ifstream(folder / "j") >> std::ws, text);
    nlohmann::json const line = nlohmann::json::parse(text);
    EXPECT_EQ(line["size"], fs::file_size(folder / line["input"].get<std::string>()));
    EXPECT_EQ(line["outputs"].size(), 1U);
    EXPECT_THAT(with({}), ElementsAre("a.png skip", "b.png skip"));
    EXPECT_THAT(with({"-e", "pixelate", "-f"}), ElementsAre("a.png replace", "b.png replace"));
    fs::remove(folder / "out/b.png");
    EXPECT_THAT(with({}), ElementsAre("a.png skip", "b.png write"));
    Make("a.png", 51);
    fs::last_write_time(folder / "a.png", fs::file_time_type::clock::now() - std::chrono::seconds(9));
    EXPECT_THAT(with({}), ElementsAre("a.png fail", "b.png write"));
    EXPECT_EQ(Apply(call).code, 1);

    // A photograph that is replaced by its own output is not taken for a new one.
    Words const inPlace{"b.png", "-e", "probe", "-o", "./", "-f", "--journal", "k", "--plugin", VELNOR_PROBE_PLUGIN};
    EXPECT_EQ(Apply(inPlace).out, "b.png: probe: first-sample=50\n");
    EXPECT_EQ(Apply(inPlace).out, "");

    RunningCommand run(
        {"apply", "a.png", "-e", "probe:wait-marker=waiting", "--journal", "k", "--plugin", VELNOR_PROBE_PLUGIN},
        folder);
    while (!fs::exists(folder / "waiting")) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    CommandResult const second = Apply(inPlace);
    EXPECT_EQ(second.code, 4);
    EXPECT_THAT(second.error, HasSubstr("journal k cannot be used: another velnor is at work with it"));
    run.Signal(SIGTERM);
    EXPECT_EQ(run.Wait().code, 130);
    std::string const before = std::to_string(fs::file_size(folder / "a.png"));
    EXPECT_THAT(Apply({"b.png", "-o", "o/", "--journal", "a.png"}).error, HasSubstr("it is no journal"));
    EXPECT_EQ(std::to_string(fs::file_size(folder / "a.png")), before);
}

TEST_F(BatchRunTest, ProgressIsToldToMachines) {
    for (char const* name : {"a.png", "b.png"}) Make(name);
    MakeText("bad.png", "no picture");
    CommandResult const told =
        Apply({"a.png", "bad.png", "b.png", "-e", "pixelate", "-o", "out/", "--progress", "json"});
    EXPECT_EQ(told.code, 1);
    std::vector<nlohmann::json> const events = ParseLines(told.error);
    nlohmann::json const& last = events.back();
    EXPECT_EQ(last["event"], "progress");
    EXPECT_EQ(last["percent"], 100.0);
    EXPECT_EQ(last["done"], 3);
    EXPECT_EQ(last["failed"], 1);
    std::multiset<std::string> kinds;
    for (nlohmann::json const& event : events)
        if (event["event"] != "progress")
            kinds.insert(event["event"].get<std::string>() + event["input"].get<std::string>());
    EXPECT_THAT(kinds, UnorderedElementsAre("photographa.png", "photographb.png", "photographbad.png", "errorbad.png"));
    CommandResult const silent =
        RunShell("TERM=xterm script -qec '$VELNOR apply a.png b.png -o silent/ --progress none' /dev/null", folder);
    EXPECT_EQ(silent.out, "");
}

} // namespace
} // namespace Velnor::Tool::Testing
