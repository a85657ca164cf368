// The command's words: lists, help, examples, schemas, manual pages and completion.
#include "Tests/Tools/ScratchCommand.h"
#include "Tools/velnor/TextWrap.h"

#include <algorithm>
#include <set>
#include <sstream>

namespace Velnor::Tool::Testing {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::Not;

std::vector<std::string> SplitLines(std::string const& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

TEST(TextWrapTest, BreaksAtSpacesAndKeepsColumns) {
    std::string const word(30, 'w');
    EXPECT_EQ(WrapText(word + " " + word + " " + word), word + " " + word + "\n" + word);
    EXPECT_EQ(WrapText("a\nb\n\n  c    " + word + " " + word + " " + word),
              "a b\n\n  c    " + word + " " + word + "\n       " + word);
    EXPECT_EQ(FormatEntry("name", "text", 2, 10), "  name    text\n");
    EXPECT_EQ(FormatEntry("long-name", "text", 2, 10), "  long-name\n          text\n");
    EXPECT_EQ(WrapParagraph(std::string(90, 'x') + " y", 2), std::string(90, 'x') + "\n  y");
}

class WordsTest : public ScratchCommand {
protected:
    /// The files that examples name.
    void MakeExampleFiles() const {
        for (char const* const name : {"photo.jpg", "palette.jpg", "overlay.png", "other.jpg"})
            Out({"apply", Sample("coffee.png"), "-e", "resizer:long-side=160", "-o", name});
        Out({"apply", Sample("astronaut.png"), "-f", "-e", "resizer:long-side=200", "-o", "photo.jpg"});
        Out({"apply", Sample("astronaut-strokes.png"), "-e", "resizer:long-side=200,method=point", "-o",
             "strokes.png"});
        Out({"apply", "photo.jpg", "-e", "grab-cut:input=strokes.png", "-o", "mask.png"});
        Out({"apply", "photo.jpg", "-e", "alpha-inserter:input=mask.png", "-o", "cutout.png"});
        Out({"apply", Sample("chelsea.png"), "-e", "crop:margins=0,0,171,0", "-o", "left.jpg"});
        Out({"apply", Sample("chelsea.png"), "-e", "crop:margins=171,0,0,0", "-o", "right.jpg"});
    }
    Json DescribeAll() const {
        Json described = Json::object();
        for (Json const& effect : Json::parse(Out({"effects", "--json"}))) {
            std::string const name = effect["name"];
            if (!described.contains(name)) described[name] = Json::parse(Out({"describe", name, "--json"}));
        }
        return described;
    }
    /// The candidates for the last word.
    std::vector<std::string> Complete(Words words) const {
        words.insert(words.begin(), {"complete", "--"});
        std::vector<std::string> texts;
        for (std::string const& line : SplitLines(Out(words))) texts.push_back(line.substr(0, line.find('\t')));
        return texts;
    }
};

TEST_F(WordsTest, EveryExampleRunsAsItIsPrinted) {
    MakeExampleFiles();
    Json const described = DescribeAll();
    for (auto const& [name, entry] : described.items()) {
        std::string const example = entry["example"];
        ASSERT_TRUE(example.starts_with("velnor apply ")) << example;
        CommandResult const run = RunShell("$VELNOR " + example.substr(7) + " --force", folder);
        EXPECT_EQ(run.code, 0) << example << "\n" << run.error;
        bool const isIdle = name == "custom" || name == "empty"; // By its nature.
        EXPECT_EQ(run.error.find("changes nothing") != std::string::npos, isIdle) << example;
        EXPECT_THAT(Out({"describe", name}), HasSubstr(example));
        EXPECT_NE(entry["family"], "Other effects") << name;
    }
}

TEST_F(WordsTest, FurtherPicturesSayWhatTheyAre) {
    std::set<std::string> helps;
    Json const described = DescribeAll();
    for (auto const& [name, entry] : described.items())
        for (Json const& parameter : entry["parameters"])
            if (parameter["name"] == "input") {
                EXPECT_THAT(parameter["help"], Not(HasSubstr("the second picture"))) << name;
                EXPECT_NE(parameter["example"], "") << name;
                helps.insert(parameter["help"]);
            }
    EXPECT_GE(helps.size(), 9U);
    EXPECT_THAT(Out({"describe", "grab-cut"}), HasSubstr("strokes, a picture of the photograph's size"));
}

TEST_F(WordsTest, NoLineOfHelpIsWiderThan80Columns) {
    std::vector<Words> calls{{"--help"}, {"effects"}, {"recipe", "list"}, {"recipe", "--help"}};
    for (char const* const command :
         {"apply", "cutout", "effects", "describe", "preview", "gallery", "manual", "completion"})
        calls.push_back({command, "--help"});
    for (Json const& effect : Json::parse(Out({"effects", "--json"}))) calls.push_back({"describe", effect["name"]});
    for (Words const& call : calls)
        for (std::string const& line : SplitLines(Out(call)))
            EXPECT_LE(line.size(), line.find(' ', 2) == std::string::npos || line.find("velnor apply") == 2 ? 400 : 80)
                << testing::PrintToString(call) << "\n"
                << line;
}

TEST_F(WordsTest, EffectsStandByFamilyAndAreSearched) {
    std::string const list = Out({"effects"});
    EXPECT_LT(list.find("Light and colour\n"), list.find("  auto-enhance"));
    EXPECT_LT(list.find("  auto-enhance"), list.find("\n\nToning and fewer colours\n"));
    auto const find = [&](Words words) {
        words.insert(words.begin(), {"effects", "--json"});
        std::set<std::string> names;
        for (Json const& effect : Json::parse(Out(words))) names.insert(effect["name"]);
        return names;
    };
    EXPECT_THAT(find({"--search", "mosaic"}), ElementsAre("pixelate"));
    EXPECT_THAT(find({"--search", "BOKEH"}), ElementsAre("blur-bokeh")); // A synonym, too.
    EXPECT_THAT(find({"--search", "faces", "--search", "eyes"}), IsSupersetOf({"aligner", "eye-extending"}));
    ExpectFailure(2, "nothing is known of xyzzy", {"effects", "--search", "xyzzy"});
}

TEST_F(WordsTest, SchemasSayWhatTheFieldsSay) {
    Json const schema = Json::parse(Out({"describe", "--schema"}));
    EXPECT_EQ(schema["$schema"], "https://json-schema.org/draft/2020-12/schema");
    Json const described = DescribeAll();
    EXPECT_EQ(schema["$defs"].size(), described.size());
    EXPECT_EQ(schema["allOf"].size(), described.size());
    for (auto const& [name, entry] : described.items()) {
        Json const& properties = schema["$defs"][name]["properties"];
        std::size_t settable = 0;
        for (Json const& parameter : entry["parameters"]) {
            if (parameter["output"]) continue;
            ++settable;
            Json const& property = properties[parameter["name"].get<std::string>()];
            EXPECT_EQ(property["description"], parameter["help"]) << name << parameter;
            if (parameter["type"] == "choice") {
                EXPECT_EQ(property["enum"], parameter["choices"]) << name;
            }
            if (parameter["type"] == "number" && !parameter["range"].is_null()) {
                EXPECT_EQ(property["maximum"], parameter["range"]["high"]) << name;
            }
        }
        EXPECT_EQ(properties.size(), settable) << name;
    }
    EXPECT_EQ(Json::parse(Out({"describe", "pixelate", "--schema"}))["$defs"].size(), 1U);
    ExpectFailure(2, "did you mean pixelate?", {"describe", "pixellate", "--schema"});
}

TEST_F(WordsTest, ManualPagesAreWellFormedAndCoverEveryCommand) {
    Out({"manual", "--into", "man"});
    std::set<std::string> pages;
    for (auto const& file : std::filesystem::directory_iterator(folder / "man"))
        pages.insert(file.path().filename().string());
    EXPECT_THAT(pages, IsSupersetOf({"velnor.1", "velnor-apply.1", "velnor-cutout.1", "velnor-effects.1",
                                     "velnor-describe.1", "velnor-recipe-save.1", "velnor-gallery.1"}));
    EXPECT_THAT(pages, Not(Contains("velnor-complete.1")));
    std::string const apply = Out({"manual", "apply"});
    EXPECT_THAT(apply, HasSubstr("\\fB\\-e\\fR, \\fB\\-\\-effect\\fR \\fIEFFECT\\fR\nEffect to run"));
    EXPECT_THAT(Out({"manual", "recipe", "save"}), HasSubstr("velnor recipe save"));
    ExpectFailure(2, "did you mean apply?", {"manual", "aply"});
    if (RunShell("command -v groff", folder).code != 0) GTEST_SKIP() << "groff is not here to read the pages";
    CommandResult const read = RunShell("for page in man/*; do groff -man -Tutf8 -wall -z $page; done", folder);
    EXPECT_EQ(read.out + read.error, "");
}

TEST_F(WordsTest, CompletionKnowsCommandsOptionsEffectsParametersAndFiles) {
    MakeText("red.png", "");
    std::filesystem::create_directory(folder / "rows");
    EXPECT_THAT(Complete({"app"}), ElementsAre("apply"));
    EXPECT_THAT(Complete({""}), Not(Contains("complete")));
    EXPECT_THAT(Complete({"recipe", "s"}), ElementsAre("save", "show", "schema"));
    EXPECT_THAT(Complete({"apply", "--max-m"}), ElementsAre("--max-megapixels", "--max-memory"));
    EXPECT_THAT(Complete({"apply", "r"}), ElementsAre("red.png", "rows/"));
    EXPECT_THAT(Complete({"apply", "--subsample", ""}), ElementsAre("on", "off"));
    EXPECT_THAT(Complete({"apply", "--subsample=o"}), ElementsAre("--subsample=on", "--subsample=off"));
    EXPECT_THAT(Complete({"apply", "red.png", "-e", "pixel"}), ElementsAre("pixelate"));
    EXPECT_THAT(Complete({"apply", "-e", "oil-paint/"}),
                testing::UnorderedElementsAre("oil-paint/velnor", "oil-paint/imagemagick"));
    EXPECT_THAT(Complete({"apply", "-e", "pixelate:method-d"}), ElementsAre("pixelate:method-downscale="));
    EXPECT_THAT(Complete({"apply", "-e", "pixelate:strength=4,method-upscale=bil"}),
                ElementsAre("pixelate:strength=4,method-upscale=bilinear"));
    EXPECT_THAT(Complete({"apply", "-e", "grab-cut:input=re"}), ElementsAre("grab-cut:input=red.png"));
    EXPECT_THAT(Complete({"completion", ""}), ElementsAre("bash", "zsh", "fish"));
    ExpectFailure(2, "there is none for \"tcsh\"; there is bash, zsh and fish", {"completion", "tcsh"});
}

TEST_F(WordsTest, BashAndFishAndZshAskIt) {
    std::string const bash =
        "PATH=$(dirname $VELNOR):$PATH; source <(velnor completion bash); COMP_LINE='velnor apply -e pixelate:meth'; "
        "COMP_POINT=${#COMP_LINE}; _velnor; printf '%s\\n' \"${COMPREPLY[@]}\"";
    EXPECT_EQ(RunShell(bash, folder).out, "method-downscale=\nmethod-upscale=\n");
    std::string const path = "PATH=$(dirname $VELNOR):$PATH ";
    if (RunShell("command -v fish", folder).code == 0) {
        std::string const fish = "fish -c 'velnor completion fish | source; complete -C \"velnor apply -e pixel\"'";
        EXPECT_THAT(RunShell(path + fish, folder).out, HasSubstr("pixelate\tTurns the picture"));
    }
    if (RunShell("command -v zsh", folder).code == 0) {
        EXPECT_EQ(RunShell(path + "zsh -fc 'velnor completion zsh >_velnor; zsh -n _velnor'", folder).error, "");
    }
}

TEST_F(WordsTest, FailuresAreJsonWhereJsonIsAskedFor) {
    CommandResult const wrong = Run({"apply", "none.png", "-e", "pixellate", "-o", "x.png", "--json"});
    EXPECT_EQ(wrong.code, 3);
    EXPECT_EQ(Json::parse(wrong.out)["code"], 3);
    EXPECT_THAT(Json::parse(wrong.out)["error"], HasSubstr("none.png cannot be read"));
    EXPECT_THAT(Json::parse(Run({"describe", "pixellate", "--json"}).out)["error"], HasSubstr("did you mean"));
    EXPECT_EQ(Run({"describe", "pixellate"}).out, "");
}

} // namespace
} // namespace Velnor::Tool::Testing
