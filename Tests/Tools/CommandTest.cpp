#include "Proc/Host/PictureFile.h"
#include "Proc/Interfaces/SettingsText.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/ColorProfiles.h"
#include "Tests/Tools/RunCommand.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <png.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <map>
#include <set>
#include <thread>

namespace Velnor::Tool::Testing {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::AnyOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using testing::UnorderedElementsAre;
using Words = std::vector<std::string>;

/// A folder with two photographs: red.png (40 x 32, RGB) and glass.png (RGBA, translucent).
class CommandTest : public testing::Test {
protected:
    CommandTest() : folder(MakeScratchFolder()) {
        Make("red.png", Proc::Color(10, 20, 200, 255), PixFmt::RGB24);
        Make("glass.png", Proc::Color(30, 60, 90, 128), PixFmt::RGBA);
    }
    ~CommandTest() override { fs::remove_all(folder); }

    void Make(std::string const& name, Proc::Color const& color, PixFmt format) {
        auto const picture = host.GetContext()->CreateImage(format, Proc::FrameFormat::Square(40, 32));
        picture->Fill(color);
        Proc::WritePicture(folder / name, *picture, nullptr);
    }
    void MakeText(std::string const& name, std::string const& text) { std::ofstream(folder / name) << text; }

    /// Format and first pixel, in one line.
    std::string Look(std::string const& name) {
        auto const picture = Proc::ReadPicture(folder / name, *host.GetContext()).picture;
        std::string text(picture->GetDescription().name);
        for (unsigned int i = 0; i < picture->GetDescription().planes[0].bytes; ++i)
            text.append(" ").append(std::to_string(picture->GetPlane(0).GetRow(0)[i]));
        return text;
    }

    std::set<std::string> Files() const {
        std::set<std::string> names;
        for (auto const& entry : fs::recursive_directory_iterator(folder))
            if (entry.is_regular_file()) names.insert(fs::relative(entry.path(), folder).string());
        return names;
    }

    CommandResult Run(Words const& arguments) const { return RunCommand(arguments, folder); }

    /// As Run, with the effects of the test's own plug-in.
    CommandResult RunWithProbe(Words arguments) const {
        arguments.insert(arguments.end(), {"--plugin", VELNOR_PROBE_PLUGIN});
        return Run(arguments);
    }

    /// The call fails with this code and this one line, and leaves no file behind.
    void ExpectFailure(int code, std::string const& line, Words const& arguments, bool withProbe = false) const {
        SCOPED_TRACE(testing::PrintToString(arguments));
        std::set<std::string> const before = Files();
        CommandResult const result = withProbe ? RunWithProbe(arguments) : Run(arguments);
        EXPECT_EQ(result.code, code);
        EXPECT_THAT(result.error, HasSubstr(line));
        EXPECT_THAT(result.error, AllOf(StartsWith("velnor: "), EndsWith("\n")));
        EXPECT_EQ(std::ranges::count(result.error, '\n'), 1);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(Files(), before);
    }

    Proc::StandardHost host;
    fs::path const folder;
};

TEST_F(CommandTest, ChainsEffectsFromLeftToRightAndIsSilent) {
    CommandResult const result = Run({"apply", "red.png", "-e", "white-balance:reference=#c81400", "-e",
                                      "gradient:stops=0:#102040,255:#c08040", "-e", "pixelate", "-o", "a.png"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.out + result.error, "");
    ASSERT_EQ(Run({"apply", "red.png", "-e", "white-balance:reference=#c81400", "-o", "b.png"}).code, 0);
    ASSERT_EQ(Run({"apply", "b.png", "-e", "gradient:stops=0:#102040,255:#c08040", "-o", "c.png"}).code, 0);
    EXPECT_EQ(Look("a.png"), Look("c.png"));
    EXPECT_NE(Look("b.png"), Look("red.png"));
    EXPECT_NE(Look("c.png"), Look("b.png"));
    ASSERT_EQ(Run({"apply", "red.png", "-e", "gradient:bypass=true", "-o", "same.png"}).code, 0);
    EXPECT_EQ(Look("same.png"), "rgb24 200 20 10");
}

TEST_F(CommandTest, WritesFilesFoldersAndPatterns) {
    MakeText("keep.txt", "x");
    fs::create_directory(folder / "there");
    EXPECT_EQ(Run({"apply", "red.png", "glass.png", "-o", "new/deep/"}).code, 0);
    EXPECT_EQ(Run({"apply", "red.png", "glass.png", "-o", "there"}).code, 0);
    EXPECT_EQ(Run({"apply", "red.png", "glass.png", "-o", "p q/{index}-{name}.jpg"}).code, 0);
    fs::copy(folder / "red.png", folder / "-dash.png");
    EXPECT_EQ(Run({"apply", "-o", "dashed.png", "--", "-dash.png"}).code, 0);
    EXPECT_THAT(Files(), UnorderedElementsAre("red.png", "glass.png", "keep.txt", "new/deep/red.png",
                                              "new/deep/glass.png", "there/red.png", "there/glass.png", "p q/1-red.jpg",
                                              "p q/2-glass.jpg", "-dash.png", "dashed.png"));
}

TEST_F(CommandTest, AlphaIsWrittenWhenTheInputHadItOrAnEffectMadeIt) {
    auto const run = [&](Words words) {
        words.insert(words.begin(), "apply");
        EXPECT_EQ(RunWithProbe(words).code, 0);
        return Look(words.back());
    };
    EXPECT_EQ(run({"glass.png", "-o", "1.png"}), "rgba 90 60 30 128");
    EXPECT_EQ(run({"red.png", "-e", "colorspace-converter:formats=rgba", "-o", "2.png"}), "rgb24 200 20 10");
    EXPECT_EQ(run({"red.png", "-e", "many", "-o", "3.png"}), "rgba 255 0 0 128");
    EXPECT_THAT(run({"glass.png", "-o", "4.jpg"}),
                testing::ContainsRegex("^rgb24 17[0-5] ")); // Half of 90, over white.
    EXPECT_THAT(run({"glass.png", "--background", "#000000", "-o", "5.jpg"}), testing::ContainsRegex("^rgb24 4[4-6] "));
}

/// A picture of 40 x 32 pixels of one colour (60, 120, 180), with a profile or an empty one for none.
void WritePng(fs::path const& file, std::string const& profile, int opacity) {
    std::FILE* const stream = std::fopen(file.c_str(), "wb");
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, stream);
    png_set_IHDR(png, info, 40, 32, 8, PNG_COLOR_TYPE_RGBA, PNG_INTERLACE_NONE, 0, 0);
    auto const* const bytes = reinterpret_cast<png_const_bytep>(profile.data());
    if (!profile.empty()) png_set_iCCP(png, info, "wide", 0, bytes, static_cast<png_uint_32>(profile.size()));
    png_write_info(png, info);
    std::vector<png_byte> row;
    for (int i = 0; i < 40; ++i) row.insert(row.end(), {60, 120, 180, static_cast<png_byte>(opacity)});
    for (int y = 0; y < 32; ++y) png_write_row(png, row.data());
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    std::fclose(stream);
}

TEST_F(CommandTest, TypedColoursMeanSrgbWhateverTheProfile) {
    using Proc::Testing::Rgb;
    std::string const profile = Proc::Testing::MakeWideProfile();
    for (bool const isClear : {false, true}) {
        WritePng(folder / (isClear ? "wide-clear.png" : "wide.png"), profile, isClear ? 0 : 255);
        WritePng(folder / (isClear ? "bare-clear.png" : "bare.png"), "", isClear ? 0 : 255);
    }
    auto const run = [&](Words words) {
        words.insert(words.begin(), "apply");
        words.insert(words.end(), {"-f", "-o", "out.ppm"});
        CommandResult const result = Run(words);
        EXPECT_EQ(result.code, 0) << result.error;
        auto const picture = Proc::ReadPicture(folder / "out.ppm", *host.GetContext()).picture;
        auto const* const pixel = picture->GetPlane(0).GetRow(0);
        return std::vector<int>(pixel, pixel + 3);
    };
    auto const isAbout = [](auto const& rgb) {
        return testing::ElementsAreArray({AllOf(testing::Ge(rgb[0] - 2), testing::Le(rgb[0] + 2)),
                                          AllOf(testing::Ge(rgb[1] - 2), testing::Le(rgb[1] + 2)),
                                          AllOf(testing::Ge(rgb[2] - 2), testing::Le(rgb[2] + 2))});
    };
    Rgb const red = Proc::Testing::ThroughProfile(profile, {255, 0, 0}, false);
    ASSERT_GT(red[1], 40) << "red of sRGB is far from that of the profile";
    std::array<unsigned char, 3> const bytes{static_cast<unsigned char>(red[0]), static_cast<unsigned char>(red[1]),
                                             static_cast<unsigned char>(red[2])};
    std::string const wideRed = Proc::TextForm<Proc::Color>::Print(Proc::Color(bytes[2], bytes[1], bytes[0], 255));
    for (std::string const effect :
         {"vignette:shape-mask.width=90,color=", "gradient:stops=256:#ffffff,0:", "bi-color-toning:highlight-color="})
        EXPECT_THAT(run({"wide.png", "-e", effect + "red"}), isAbout(run({"bare.png", "-e", effect + wideRed})))
            << effect;
    std::string const vignette =
        "vignette:shape-mask.width=90,shape-mask.background=255,shape-mask.feather=0,color=red";
    EXPECT_THAT(run({"wide.png", "-e", vignette}), isAbout(red));
    EXPECT_THAT(run({"wide-clear.png", "--background", "red"}), isAbout(red));
    EXPECT_EQ(run({"wide.png", "--to-srgb", "-e", vignette}), (std::vector{255, 0, 0}));
    EXPECT_EQ(run({"wide-clear.png", "--to-srgb", "--background", "red"}), (std::vector{255, 0, 0}));
    EXPECT_EQ(run({"wide.png"}), (std::vector{60, 120, 180}));
    EXPECT_THAT(run({"wide.png", "--to-srgb"}), isAbout(Proc::Testing::ThroughProfile(profile, {60, 120, 180}, true)));
}

TEST_F(CommandTest, ReplacesOnlyWithForce) {
    MakeText("old.png", "old");
    ExpectFailure(4, "old.png exists already; --force replaces it", {"apply", "red.png", "-o", "old.png"});
    // Nothing is done when one of several is there.
    ExpectFailure(4, "red.png (and 1 more) exists already", {"apply", "red.png", "glass.png", "-o", "./"});
    EXPECT_EQ(Run({"apply", "red.png", "-o", "old.png", "--force"}).code, 0);
    EXPECT_EQ(Look("old.png"), "rgb24 200 20 10");
    EXPECT_EQ(Run({"apply", "red.png", "-e", "many", "-o", "red.png", "-f", "--plugin", VELNOR_PROBE_PLUGIN}).code, 0);
    EXPECT_EQ(Look("red.png"), "rgba 255 0 0 128");
}

TEST_F(CommandTest, WrongCallsSayWhatIsAccepted) {
    ExpectFailure(2, "no command is given", {});
    ExpectFailure(2, "there is no command \"aply\"; did you mean apply?", {"aply"});
    ExpectFailure(2, "no photograph is given", {"apply", "-o", "x.png"});
    ExpectFailure(2, "-o is missing", {"apply", "red.png"});
    ExpectFailure(2, "apply has no option --forse; did you mean --force?",
                  {"apply", "red.png", "-o", "x.png", "--forse"});
    ExpectFailure(2, "takes no further argument \"more\"", {"effects", "more"});
    ExpectFailure(2, "no effect is given", {"describe"});
    ExpectFailure(2, "did you mean pixelate?", {"describe", "pixellate"});
    ExpectFailure(2, "cannot be loaded", {"effects", "--plugin", "red.png"});
    for (auto const& [arguments, line] : std::vector<std::pair<Words, std::string>>{
             {{"--quality", "101"}, "--quality: 101 is outside the range 1 to 100"},
             {{"--quality", "high"}, "--quality: \"high\" is no whole number"},
             {{"--quality", "50"}, "such a file has no quality"},
             {{"--strip", "names"}, "--strip: there is no \"names\"; it takes all, gps or thumbnail"},
             {{"--subsample", "yes"}, "--subsample: there is no \"yes\"; it takes on or off"},
             {{"--background", "glas"}, "--background: \"glas\" is no colour"},
             {{"--max-megapixels", "0"}, "--max-megapixels: 0 is outside the range"},
             {{"-e"}, "--effect"},
             {{"-e", "pixellate"}, "there is no effect \"pixellate\"; did you mean pixelate?"},
             {{"-e", "zzzzzzz"}, "`velnor effects` lists what there is"},
             {{"-e", "pixelate/opencv"}, "pixelate has no implementation \"opencv\"; there is velnor"},
             {{"-e", "pixelate:strenght=3"}, "pixelate has no parameter \"strenght\"; did you mean strength?"},
             {{"-e", "pixelate:strength=400"}, "pixelate: strength: 400 is outside the range 0 to 100 %"},
             {{"-e", "pixelate:strength=lots"}, "strength: \"lots\" is no number; the range is 0 to 100 %"},
             {{"-e", "pixelate:strength=nan"}, "strength: \"nan\" is no number"},
             {{"-e", "pixelate:method-upscale=bilinar"}, "did you mean bilinear"},
             {{"-e", "pixelate:bypass=maybe"}, "bypass: \"maybe\" is none of true, false"},
             {{"-e", "white-balance:reference=redish"}, "reference: \"redish\" is no colour: #rrggbb"},
             {{"-e", "pixelate:"}, "is no parameter=value"},
             {{"-e", "second"}, "second works on two pictures; second:input=FILE names the second"},
             {{"-e", "second:input=red.png,input=red.png"}, "second works on two pictures; input is given twice"},
             {{"-e", "probe:first-sample=3"}, "first-sample is a result of the effect and cannot be set"},
             {{"-e", "probe:input=red.png"}, "probe has no parameter \"input\""}}) {
        Words words{"apply", "red.png", "-o", "new/x.png", "--plugin", VELNOR_PROBE_PLUGIN};
        words.insert(words.end(), arguments.begin(), arguments.end());
        ExpectFailure(2, line, words);
    }
    ExpectFailure(2, "is one file for 2 photographs", {"apply", "red.png", "glass.png", "-o", "x.png"});
    ExpectFailure(2, "would both become x/red.png", {"apply", "red.png", "./red.png", "-o", "x/"});
    ExpectFailure(2, "did you mean index?", {"apply", "red.png", "-o", "{indx}.png"});
}

TEST_F(CommandTest, OfSeveralThingsWrongTheFirstIsSaid) {
    fs::create_directory(folder / "there");
    fs::copy(folder / "red.png", folder / "effects"); // Named like a command.
    EXPECT_EQ(Run({"apply", "effects", "-e", "vignette", "-o", "x.png"}).code, 0);
    struct Call {
        Words words;
        int code;
        std::string line;
    };
    std::string const folderWords = "there is a folder; --recursive takes the photographs in it";
    for (Call const& call : std::vector<Call>{
             {{"foo", "apply", "red.png", "-o", "y.png"}, 2, "there is no command \"foo\"; there is apply, cutout"},
             {{"aply", "apply", "red.png", "-o", "y.png"}, 2, "there is no command \"aply\"; did you mean apply?"},
             {{"--versio", "apply", "red.png", "-o", "y.png"}, 2, "there is no option --versio before a command"},
             {{"apply", "*.jpg", "-e", "vignette", "-o", "out"}, 3, "no file has a name like *.jpg"},
             {{"apply", "gone.png", "-e", "pixellate", "-o", "out"}, 3, "gone.png cannot be read: No such file"},
             {{"apply", "red.png", "gone.png", "-o", "y.png"}, 3, "gone.png cannot be read: No such file"},
             {{"apply", "there", "-o", "out"}, 3, folderWords},
             {{"apply", "there", "-e", "vignette"}, 3, folderWords},
             {{"apply", "vignette", "-o", "out"}, 2, "there is no photograph vignette; an effect is given by -e"},
             {{"apply", "red.png", "pixelate:strength=3", "-o", "o/"}, 2, "as in -e pixelate:strength=3"},
             {{"apply", "red.png", "-e", "pixellate", "-o", "out"}, 2, "did you mean pixelate?"},
             {{"apply", "red.png", "-e", "bw", "-o", "y.png"}, 2, "no effect \"bw\"; black-white does that"},
             {{"apply", "red.png", "-e", "Crop", "-o", "y.png"}, 2, "did you mean crop?"},
             {{"apply", "red.png", "-e", "cutter:input=red.png", "-o", "y.png"}, 2, "cutter has no parameter"},
             {{"apply", "red.png", "-e", "edge-remove:input=red.png,input=red.png", "-o", "y.png"},
              2,
              "edge-remove works on at most 2 pictures; input is given 2 times"},
             {{"apply", "red.png", "-e", "second:input=\"red.png", "-o", "y.png"}, 2, "a value that begins with \""}})
        ExpectFailure(call.code, call.line, call.words);
}

TEST_F(CommandTest, BadInputsAndOutputsHaveTheirOwnCodes) {
    MakeText("empty.png", "");
    MakeText("text.png", "no picture at all");
    fs::copy(folder / "red.png", folder / "cut.png");
    fs::resize_file(folder / "cut.png", fs::file_size(folder / "cut.png") / 2);
    for (char const* input : {"missing.png", "empty.png", "text.png", "cut.png", ".", "a\nb.png"}) {
        std::string shown = input;
        std::ranges::replace(shown, '\n', ' ');
        ExpectFailure(3, shown, {"apply", input, "-o", "x.png"});
    }
    ExpectFailure(3, "missing.png", {"apply", "red.png", "-e", "second:input=missing.png", "-o", "x.png"}, true);
    for (std::string const option : {"--max-megapixels", "--max-memory"})
        ExpectFailure(5, option + " raises it", {"apply", "red.png", "-o", "x.png", option, "0.001"});
    ExpectFailure(4, "the extension .xyz is unknown; known are", {"apply", "red.png", "-o", "x.xyz"});
    ExpectFailure(4, "the name has no extension", {"apply", "red.png", "-o", "x"});
    ExpectFailure(4, "folder red.png/x cannot be made", {"apply", "glass.png", "-o", "red.png/x/y.png"});
    ExpectFailure(4, "red.png: probe: The first sample is too large",
                  {"apply", "red.png", "-e", "probe:fail-above=100", "-o", "x.png"}, true);
}

TEST_F(CommandTest, OneFailureAmongSeveralLeavesTheOthersDone) {
    CommandResult const some = Run({"apply", "missing.png", "red.png", "gone.png", "glass.png", "-o", "out/"});
    EXPECT_EQ(some.code, 1);
    EXPECT_EQ(std::ranges::count(some.error, '\n'), 2);
    EXPECT_THAT(some.error, AllOf(HasSubstr("missing.png"), HasSubstr("gone.png")));
    EXPECT_TRUE(fs::exists(folder / "out/red.png") && fs::exists(folder / "out/glass.png"));

    // An effect that failed on one photograph works on the next.
    EXPECT_EQ(RunWithProbe({"apply", "red.png", "glass.png", "-e", "probe:fail-above=100", "-o", "p/"}).code, 1);
    EXPECT_EQ(Look("p/glass.png"), "rgba 90 60 30 128");
    EXPECT_EQ(Run({"apply", "missing.png", "gone.png", "-o", "none/"}).code, 3);
    EXPECT_FALSE(fs::exists(folder / "none"));
}

TEST_F(CommandTest, EveryKindOfEffectRuns) {
    CommandResult const two = RunWithProbe({"apply", "red.png", "-e", "second:input=glass.png", "-o", "two.png"});
    EXPECT_EQ(two.code, 0) << two.error;
    EXPECT_EQ(Look("two.png"), "rgba 90 60 30 128");
    ASSERT_EQ(RunWithProbe({"apply", "red.png", "-e", "many:input=red.png,input=glass.png", "-o", "many.png"}).code, 0);
    EXPECT_EQ(Look("many.png"), "rgba 255 2 0 128");
    EXPECT_EQ(RunWithProbe({"apply", "red.png", "-e", "many:bypass=on", "-o", "kept.png"}).code, 0);
    EXPECT_EQ(Look("kept.png"), "rgb24 200 20 10");
}

TEST_F(CommandTest, ResultsOfEffectsArePrinted) {
    EXPECT_EQ(RunWithProbe({"apply", "red.png", "-e", "probe", "-o", "1.png"}).out,
              "red.png: probe: first-sample=200\n");
    // Without -o nothing is written; an effect that is switched off finds nothing.
    std::set<std::string> const before = Files();
    EXPECT_EQ(RunWithProbe({"apply", "red.png", "glass.png", "-e", "gradient:bypass=on", "-e", "probe"}).out,
              "red.png: probe: first-sample=200\nglass.png: probe: first-sample=90\n");
    EXPECT_EQ(RunWithProbe({"apply", "red.png", "-e", "probe:bypass=on"}).out, "");
    EXPECT_EQ(Files(), before);
    ExpectFailure(2, "-o is missing", {"apply", "red.png", "-e", "pixelate"});

    CommandResult const result =
        RunWithProbe({"apply", "red.png", "no.png", "-e", "probe:warn=mind you", "-o", "3/", "--json"});
    std::size_t const end = result.out.find('\n'); // One document a line.
    auto const done = nlohmann::json::parse(result.out.substr(0, end));
    auto const failed = nlohmann::json::parse(result.out.substr(end + 1));
    EXPECT_EQ(done["outputs"], nlohmann::json{"3/red.png"});
    EXPECT_EQ(done["code"], 0);
    EXPECT_EQ(done["warnings"], nlohmann::json{"red.png: probe: mind you"});
    EXPECT_EQ(done["results"][0]["effect"], "probe");
    EXPECT_EQ(done["results"][0]["values"]["first-sample"], 200);
    EXPECT_EQ(failed["code"], 3);
    EXPECT_EQ(failed["outputs"], nlohmann::json::array());
    EXPECT_THAT(failed["error"].get<std::string>(), HasSubstr("no.png"));
    EXPECT_THAT(result.error, HasSubstr("velnor: red.png: probe: mind you\n"));
    EXPECT_THAT(RunWithProbe({"apply", "red.png", "glass.png", "-e", "probe", "--stats"}).error,
                AllOf(HasSubstr("SettingsEffectProbe>::GetStatistic"), HasSubstr("  Count: 2\n")));
}

TEST_F(CommandTest, PiecesOfAPhotographHaveNamesOfTheirOwn) {
    std::string const cut = "cutter:patch-width=20,patch-height=32,overlap-x=4";
    ASSERT_EQ(Run({"apply", "red.png", "-e", cut, "-e", "pixelate", "-o", "tiles/{name}-{y}-{x}.png"}).code, 0);
    EXPECT_THAT(Files(), UnorderedElementsAre("red.png", "glass.png", "tiles/red-0-00.png", "tiles/red-0-16.png",
                                              "tiles/red-0-32.png"));
    EXPECT_EQ(Look("tiles/red-0-32.png"), "rgb24 200 20 10");
    // A piece that is cut up again: places stay those in the photograph.
    ASSERT_EQ(Run({"apply", "red.png", "-e", "cutter:patch-width=20,patch-height=16", "-e",
                   "cutter:patch-width=10,patch-height=16", "-o", "{x}+{y}.png"})
                  .code,
              0);
    for (char const* name : {"00+00", "10+00", "20+00", "30+00", "00+16", "10+16", "20+16", "30+16"})
        EXPECT_TRUE(fs::exists(folder / (std::string(name) + ".png"))) << name;

    char const* const several = "red.png becomes 3 pictures, and -o ";
    for (char const* output : {"one.png", "all/", "{name}-{y}.png"})
        ExpectFailure(2, several + std::string(output) + " gives several of them one name; say a pattern with {x}",
                      {"apply", "red.png", "-e", cut, "-o", output});
    // All are free before the first is written.
    MakeText("b-16.png", "mine");
    ExpectFailure(4, "b-16.png exists already", {"apply", "red.png", "-e", cut, "-o", "b-{x}.png"});

    CommandResult const found = RunWithProbe({"apply", "red.png", "-e", cut, "-e", "probe"});
    EXPECT_EQ(found.out, "red.png at 0,0: probe: first-sample=200\nred.png at 16,0: probe: first-sample=200\n"
                         "red.png at 32,0: probe: first-sample=200\n");
    auto const json = nlohmann::json::parse(RunWithProbe({"apply", "red.png", "-e", cut, "-e", "probe", "--json"}).out);
    EXPECT_EQ(json["results"][2]["at"], (nlohmann::json{32, 0}));
}

TEST_F(CommandTest, PhotographsAndPiecesAreJoined) {
    auto const look = [&](Words words) {
        words.insert(words.begin(), "apply");
        CommandResult const result = RunWithProbe(words);
        EXPECT_EQ(result.code, 0) << result.error;
        auto const picture = Proc::ReadPicture(folder / words.back(), *host.GetContext()).picture;
        Proc::FrameFormat const size = picture->GetFrameFormat();
        return std::to_string(size.width) + "x" + std::to_string(size.height) + " " + Look(words.back());
    };
    std::string const photo = "40x32 rgb24 200 20 10";
    std::string const cut = "cutter:patch-width=20,patch-height=20,overlap-x=4";
    // Effects in between make new pictures, of another size even, and the padding goes away again.
    EXPECT_EQ(look({"red.png", "-e", cut, "-e", "pixelate", "-e", "stitcher", "-o", "1.png"}), photo);
    EXPECT_EQ(look({"red.png", "-e", cut, "-e", "resizer:mode=by-factor,factor=0.5", "-e", "stitcher", "-o", "2.png"}),
              "20x16 rgb24 200 20 10");
    EXPECT_EQ(look({"red.png", "-e", "cutter", "-e", "stitcher", "-o", "0.png"}), photo); // A piece larger than it.
    // From files, in the order in which the shell names them.
    ASSERT_EQ(Run({"apply", "red.png", "-e", cut, "-o", "tiles/{y}-{x}.png"}).code, 0);
    EXPECT_EQ(RunShell("$VELNOR apply tiles/*.png -e stitcher:columns=3,overlap-x=4 -o 3.png", folder).code, 0);
    EXPECT_EQ(Look("3.png"), "rgb24 200 20 10");

    // The green tells how many pictures there were beside the first.
    EXPECT_EQ(look({"red.png", "glass.png", "red.png", "-e", "many:input=red.png", "-o", "4.png"}),
              "40x32 rgba 255 3 0 128");
    EXPECT_EQ(look({"red.png", "-e", cut, "-e", "many", "-o", "5.png"}), "20x20 rgba 255 5 0 128");
    EXPECT_EQ(RunWithProbe({"apply", "red.png", "glass.png", "-e", cut, "-e", "many", "-o", "each/"}).code, 0);
    EXPECT_EQ(Look("each/glass.png"), "rgba 255 5 0 128"); // The pieces of one photograph, not of both.
    auto const json = nlohmann::json::parse(
        RunWithProbe({"apply", "red.png", "glass.png", "-e", "probe", "-e", "many", "-o", "all/", "--json"}).out);
    EXPECT_EQ(json["inputs"], (nlohmann::json{"red.png", "glass.png"}));
    EXPECT_EQ(json["outputs"], nlohmann::json{"all/red.png"});
    EXPECT_EQ(json["results"][1]["input"], "glass.png");
    ExpectFailure(3, "gone.png", {"apply", "red.png", "gone.png", "-e", "many", "-o", "6.png"}, true);
}

TEST_F(CommandTest, MasksAreTakenAsTheirLuma) {
    Make("mask.png", Proc::Color(200, 200, 200, 255), PixFmt::RGB24);
    Make("clear.png", Proc::Color(200, 200, 200, 51), PixFmt::RGBA);
    Make("grey.png", Proc::Color(90, 90, 90, 255), PixFmt::GRAY8);
    auto const run = [&](std::string const& photo, std::string const& effect) {
        EXPECT_EQ(Run({"apply", photo, "-e", effect, "-o", "x.png", "-f"}).error, "");
        return Look("x.png");
    };
    EXPECT_EQ(run("red.png", "alpha-inserter:input=mask.png"), "rgba 200 20 10 200");
    EXPECT_EQ(run("red.png", "alpha-inserter:input=clear.png"), "rgba 200 20 10 40"); // Over black.
    EXPECT_EQ(run("grey.png", "alpha-inserter:input=mask.png"), "ya8 90 200");
    EXPECT_EQ(run("mask.png", "extra-alpha-extractor:pixel-format=yuv420p"), "gray8 200");
}

TEST_F(CommandTest, EffectsLeaveTransparencyAndGreyOrTheCommandSaysSo) {
    Make("grey.png", Proc::Color(90, 90, 90, 255), PixFmt::GRAY8);
    Make("grey-glass.png", Proc::Color(90, 90, 90, 40), PixFmt::YA8);
    Make("rgb.png", Proc::Color(90, 90, 90, 255), PixFmt::RGB24);
    auto const run = [&](std::string const& photo, std::string const& effect) {
        EXPECT_EQ(RunWithProbe({"apply", photo, "-e", effect, "-o", "x.png", "-f"}).error, "") << effect;
        return Look("x.png");
    };
    for (char const* effect : {"auto-enhance", "blur-bokeh", "gradient", "black-white"})
        EXPECT_THAT(run("glass.png", effect), AllOf(StartsWith("rgba "), EndsWith(" 128"))) << effect;
    EXPECT_EQ(run("glass.png", "alpha-extractor"), "gray8 128"); // A mask has no use for it.
    EXPECT_EQ(run("grey.png", "pixelate"), "gray8 90");
    EXPECT_EQ(run("grey-glass.png", "pixelate"), "ya8 90 40");
    std::string const gradient = "gradient:stops=0:#000000,90:#c81400,255:#ffffff";
    EXPECT_EQ(run("grey.png", gradient), run("rgb.png", gradient));
    EXPECT_EQ(run("grey-glass.png", gradient), "rgba" + run("rgb.png", gradient).substr(5) + " 40");
    EXPECT_EQ(run("grey.png", "auto-enhance").substr(0, 6), "gray8 ");
    EXPECT_THAT(run("grey.png", "blend-palette:input=red.png"), StartsWith("rgb24 "));
    EXPECT_THAT(run("grey.png", "tint-temperature:temperature=60"), StartsWith("rgb24 "));

    // Once for a photograph, whatever pieces it was in.
    CommandResult const result = Run({"apply", "red.png", "-e", "cutter:patch-width=20,patch-height=32", "-e",
                                      "white-balance", "-e", "stitcher", "-o", "y.png", "--json"});
    std::string const warning =
        "red.png: white-balance: changes nothing with these parameters; `velnor describe white-balance` shows others";
    EXPECT_EQ(result.error, "velnor: " + warning + "\n");
    EXPECT_EQ(nlohmann::json::parse(result.out)["warnings"], nlohmann::json{warning});
}

TEST_F(CommandTest, ADashIsStandardInputAndOutput) {
    CommandResult const piped = RunShell(
        "$VELNOR apply - -e white-balance:reference=#c81400 -e probe -o - --to png --plugin " VELNOR_PROBE_PLUGIN
        " <red.png >x.png",
        folder);
    EXPECT_EQ(piped.code, 0);
    EXPECT_EQ(piped.error, "standard input: probe: first-sample=73\n"); // Beside the picture, not in it.
    EXPECT_THAT(Look("x.png"), StartsWith("rgb24 73 "));
    EXPECT_EQ(
        RunShell(
            "cat red.png | $VELNOR apply - glass.png - -e many:input=- -o - --to webp --plugin " VELNOR_PROBE_PLUGIN
            " | $VELNOR apply - -o y.png",
            folder)
            .error,
        "");
    EXPECT_THAT(Look("y.png"), StartsWith("rgba "));
    for (auto const& [line, code, error] : std::vector<std::tuple<std::string, int, std::string>>{
             {"$VELNOR apply red.png -o - | cat; exit ${PIPESTATUS[0]}", 2, "--to FORMAT says in which format"},
             {"$VELNOR apply red.png -o - --to xyz", 2, "--to xyz: the extension .xyz is unknown"},
             {"$VELNOR apply red.png -o z.png --to png", 2, "--to names the format of standard output"},
             {"$VELNOR apply red.png glass.png -o - --to png", 2, "is one file for 2 photographs"},
             {"$VELNOR apply - -o z.png </dev/null", 3, "standard input cannot be read: it is empty"},
             {"head -c 100 red.png | $VELNOR apply - -o z.png", 3, "standard input cannot be read: "},
             {"$VELNOR apply - -o z.png --max-megapixels 0.001 <red.png", 5, "standard input is too large"},
             {"TMPDIR=/nowhere $VELNOR apply - -e white-balance -o - --to ppm <red.png", 0,
              "standard input: white-balance: changes nothing"}, // No file that a kill would leave there.
             {"VELNOR_TARGET=mmx $VELNOR apply red.png -o z.png", 2, "VELNOR_TARGET is \"mmx\"; it takes scalar, "},
             {"$VELNOR apply red.png -o - --to png >/dev/full", 4, "standard output cannot be written"}}) {
        CommandResult const result = RunShell(line, folder);
        EXPECT_EQ(result.code, code) << line;
        EXPECT_THAT(result.error, HasSubstr(error)) << line;
        EXPECT_FALSE(fs::exists(folder / "z.png")) << line;
    }
}

TEST_F(CommandTest, APictureMadeEvenByAnEffectIsCutBack) {
    auto const grown = [&](std::uint32_t width, std::uint32_t height, std::string const& effect) {
        auto const picture = host.GetContext()->CreateImage(PixFmt::RGB24, Proc::FrameFormat::Square(width, height));
        picture->Fill(Proc::Color(10, 20, 200, 255));
        Proc::WritePicture(folder / "in.png", *picture, nullptr, {.overwrite = true});
        EXPECT_EQ(RunWithProbe({"apply", "in.png", "-e", effect, "-o", "grown.png", "-f"}).code, 0);
        Proc::FrameFormat const size =
            Proc::ReadPicture(folder / "grown.png", *host.GetContext()).picture->GetFrameFormat();
        return std::to_string(size.width) + "x" + std::to_string(size.height);
    };
    EXPECT_EQ(grown(5, 7, "probe:grow=1"), "5x7");
    EXPECT_EQ(grown(5, 7, "probe:grow=2"), "7x9");
    EXPECT_EQ(grown(6, 8, "probe:grow=1"), "7x9"); // These were even.
    EXPECT_EQ(grown(5, 8, "probe:grow=1"), "6x9");
    EXPECT_EQ(grown(5, 7, "pad:margins=0,0,1,1"), "6x8"); // As it was asked for.
}

/// A photograph that is red on the left and blue on the right, with strokes on both.
class CutoutTest : public CommandTest {
protected:
    CutoutTest() {
        Paint("two.png", PixFmt::RGB24,
              [](std::uint32_t x) { return x < 20 ? Proc::Color(10, 20, 200, 255) : Proc::Color(180, 30, 10, 255); });
        PaintStrokes("strokes.png", 255, 128);
        PaintStrokes("one.png", 255, 0);
        PaintStrokes("none.png", 0, 0);
        Make("small.png", Proc::Color(0, 0, 0, 255), PixFmt::GRAY8);
        RunWell({"apply", "small.png", "-e", "resizer:mode=by-factor,factor=0.5", "-o", "small.png", "-f"});
    }

    template <class ColorAt>
    void Paint(std::string const& name, PixFmt format, ColorAt const& colorAt) {
        auto const picture = host.GetContext()->CreateImage(format, Proc::FrameFormat::Square(40, 32));
        for (std::uint32_t x = 0; x < 40; ++x) {
            auto const column = host.GetContext()->CreateImage(format, Proc::FrameFormat::Square(1, 32));
            column->Fill(colorAt(x));
            Proc::CopyDataVideo(column, picture, static_cast<int>(x), 0);
        }
        Proc::WritePicture(folder / name, *picture, nullptr, {.overwrite = true});
    }
    void PaintStrokes(std::string const& name, int object, int background, PixFmt format = PixFmt::GRAY8) {
        Paint(name, format, [=](std::uint32_t x) {
            auto const grey = static_cast<unsigned char>(x == 5 ? object : (x == 30 ? background : 0));
            return Proc::Color(grey, grey, grey, 255);
        });
    }
    void RunWell(Words const& words) {
        CommandResult const result = Run(words);
        ASSERT_EQ(result.code, 0) << result.error;
    }

    /// The alpha of each column of row 10.
    std::vector<int> AlphaOf(std::string const& name) {
        auto const picture = Proc::ReadPicture(folder / name, *host.GetContext()).picture;
        EXPECT_EQ(picture->GetPixFmt(), PixFmt::RGBA);
        std::vector<int> alpha;
        for (std::uint32_t x = 0; x < 40; ++x) alpha.push_back(picture->GetPlane(0).GetRow(10)[x * 4 + 3]);
        return alpha;
    }
};

TEST_F(CutoutTest, TheMaskBecomesTheAlpha) {
    std::vector<int> sharp(40, 0);
    std::fill_n(sharp.begin(), 20, 255);
    RunWell({"cutout", "two.png", "--strokes", "strokes.png", "-o", "new/hard.png", "--feather=0", "--smooth=0"});
    EXPECT_EQ(AlphaOf("new/hard.png"), sharp);
    EXPECT_EQ(Look("new/hard.png"), "rgba 200 20 10 255");
    RunWell({"cutout", "two.png", "--strokes", "strokes.png", "-o", "opencv.png", "--feather=0", "--algorithm=opencv"});
    EXPECT_EQ(AlphaOf("opencv.png"), sharp);

    RunWell({"cutout", "two.png", "--strokes", "strokes.png", "-o", "soft.png", "--feather=2"});
    std::vector<int> const soft = AlphaOf("soft.png");
    EXPECT_TRUE(std::ranges::is_sorted(soft, std::greater<>()));
    EXPECT_EQ(soft[8], 255);
    EXPECT_NEAR(soft[19] + soft[20], 255, 2);
    EXPECT_GT(soft[22], 20);
    EXPECT_EQ(soft[31], 0);

    PaintStrokes("others.png", 90, 30, PixFmt::RGB24); // Painted in colour, with greys of its own.
    RunWell({"cutout", "two.png", "--strokes", "others.png", "-o", "others-cut.png", "--foreground", "30",
             "--background", "90", "--feather=0", "--smooth=0"});
    std::ranges::transform(sharp, sharp.begin(), [](int alpha) { return 255 - alpha; });
    EXPECT_EQ(AlphaOf("others-cut.png"), sharp);
}

TEST_F(CutoutTest, AlphaOfThePhotographAndOfTheStrokesCounts) {
    Paint("veil.png", PixFmt::RGBA, [](std::uint32_t x) {
        unsigned char const alpha = x < 10 ? 100 : (x < 15 ? 0 : 255);
        return x < 20 ? Proc::Color(10, 20, 200, alpha) : Proc::Color(180, 30, 10, alpha);
    });
    // A second stroke on the object's side is the background's, but clear.
    Paint("layers.png", PixFmt::RGBA, [](std::uint32_t x) {
        unsigned char const grey = x == 5 ? 255 : (x == 30 || x == 12 ? 128 : 0);
        return Proc::Color(grey, grey, grey, x == 12 || grey == 0 ? 0 : 200);
    });
    RunWell({"cutout", "veil.png", "--strokes", "layers.png", "-o", "cut.png", "--feather=0", "--smooth=0"});
    std::vector<int> expected(40, 0);
    std::fill_n(expected.begin(), 10, 100);
    std::fill_n(expected.begin() + 15, 5, 255);
    EXPECT_EQ(AlphaOf("cut.png"), expected);
}

TEST_F(CutoutTest, AlmostAMarkIsOneAndAWordSaysWhenMostOfThePaintIsNone) {
    PaintStrokes("near.png", 252, 131);
    CommandResult const near =
        Run({"cutout", "two.png", "--strokes", "near.png", "-o", "near-cut.png", "--feather=0", "--smooth=0"});
    EXPECT_EQ(near.code, 0);
    EXPECT_EQ(near.error, "");
    EXPECT_EQ(AlphaOf("near-cut.png")[19], 255);
    EXPECT_EQ(AlphaOf("near-cut.png")[20], 0);

    Paint("soft.png", PixFmt::GRAY8, [](std::uint32_t x) { // from white to black, and one column of grey
        auto const grey = static_cast<unsigned char>(x < 10 ? 255 - 20 * x : (x == 30 ? 128 : 0));
        return Proc::Color(grey, grey, grey, 255);
    });
    CommandResult const soft = Run({"cutout", "two.png", "--strokes", "soft.png", "-o", "soft-cut.png"});
    EXPECT_EQ(soft.code, 0);
    EXPECT_EQ(soft.error, "velnor: soft.png: most of what is painted is neither 255 (object) nor 128 (background) and "
                          "marks nothing\n");
}

TEST_F(CutoutTest, WhatCannotBeCutOutIsSaid) {
    auto const fails = [&](int code, std::string const& line, Words const& more) {
        Words words{"cutout", "two.png", "-o", "x.png"};
        words.insert(words.end(), more.begin(), more.end());
        ExpectFailure(code, line, words);
    };
    ExpectFailure(2, "no photograph is given", {"cutout", "--strokes", "strokes.png", "-o", "x.png"});
    ExpectFailure(2, "-o is missing", {"cutout", "two.png", "--strokes", "strokes.png"});
    ExpectFailure(2, "cutout: -o x.jpg: this format has no transparency",
                  {"cutout", "two.png", "--strokes", "strokes.png", "-o", "x.jpg"});
    fails(2, "--strokes is missing", {});
    fails(2, "cutout: smooth: 99 is outside the range 0 to 20", {"--strokes", "strokes.png", "--smooth", "99"});
    fails(2, "cutout: algorithm: \"opencw\" is none of grid-graph, opencv; did you mean opencv",
          {"--strokes", "strokes.png", "--algorithm", "opencw"});
    fails(2, "--feather: -1 is outside the range", {"--strokes", "strokes.png", "--feather=-1"});
    fails(3, "gone.png", {"--strokes", "gone.png"});
    fails(2, "cutout: --foreground and --background are both 7;",
          {"--strokes", "strokes.png", "--foreground=7", "--background=7"});
    fails(4, "small.png is 20 x 16 pixels, two.png 40 x 32 pixels: they must be of one size",
          {"--strokes", "small.png"});
    fails(3, "one.png: The strokes picture has no strokes on the background (value 128)", {"--strokes", "one.png"});
    fails(3, "none.png: The strokes picture has no strokes on the object (value 255) or on the background",
          {"--strokes", "none.png"});
    ExpectFailure(4, "exists already", {"cutout", "two.png", "--strokes", "strokes.png", "-o", "glass.png"});

    // Strokes in colour are strokes in their luma.
    PaintStrokes("rgb.png", 255, 128, PixFmt::RGB24);
    RunWell({"apply", "two.png", "-e", "grab-cut:input=strokes.png", "-o", "by-grey.png"});
    RunWell({"apply", "two.png", "-e", "grab-cut:input=rgb.png", "-e", "grab-cut-segmentation/opencv:input=rgb.png",
             "-o", "by-rgb.png"});
    EXPECT_EQ(Look("by-grey.png"), "gray8 255");

    CommandResult const mask = Run({"apply", "two.png", "-e", "grab-cut:input=one.png", "-o", "mask.png"});
    EXPECT_EQ(mask.code, 0);
    EXPECT_EQ(mask.error,
              "velnor: two.png: grab-cut: The strokes picture has no strokes on the background (value 128), "
              "so nothing was cut out\n");
    EXPECT_EQ(Look("mask.png"), "gray8 0");
    ExpectFailure(4, "two.png: grab-cut: The strokes are 20 x 16 pixels, the picture 40 x 32",
                  {"apply", "two.png", "-e", "grab-cut:input=small.png,foreground=0,background=0", "-o", "x.png"});
}

TEST_F(CommandTest, LogLinesAreShownOnDemandOnly) {
    CommandResult const verbose = Run({"apply", "red.png", "-e", "pixelate", "-o", "1.png", "-v"});
    EXPECT_EQ(verbose.code, 0);
    EXPECT_THAT(verbose.error, AllOf(HasSubstr("Pixelate scale: "), HasSubstr("SettingsEffectPixelate_Velnor done")));
    CommandResult const less = Run({"apply", "red.png", "-e", "pixelate", "-o", "2.png", "--log-level=29"});
    EXPECT_THAT(less.error, AllOf(HasSubstr("Pixelate scale: "), Not(HasSubstr(" done"))));
    EXPECT_EQ(Run({"apply", "red.png", "-e", "pixelate", "-o", "3.png"}).error, "");
}

TEST_F(CommandTest, StopsAtASignalWithoutAnOutput) {
    for (int const signal : {SIGINT, SIGTERM}) {
        std::set<std::string> expected = Files();
        RunningCommand command({"apply", "red.png", "glass.png", "-e", "probe:wait-marker=waiting", "-o", "out/",
                                "--plugin", VELNOR_PROBE_PLUGIN},
                               folder);
        while (!fs::exists(folder / "waiting")) std::this_thread::yield();
        command.Signal(signal);
        CommandResult const result = command.Wait();
        EXPECT_EQ(result.code, 130);
        EXPECT_EQ(result.error, "velnor: stopped\n");
        fs::remove(folder / "waiting");
        EXPECT_EQ(Files(), expected);
    }
}

TEST_F(CommandTest, AShortageOfMemoryIsSaidWhereverItShows) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "The sanitizers take terabytes of addresses.";
#endif
    for (char const* const effect : {"pixelate", "oil-paint", "auto-enhance"})
        for (int const megabytes : {60, 90, 120, 150, 180, 210}) {
            std::string const limit = "ulimit -v " + std::to_string(megabytes * 1000);
            CommandResult const result =
                RunShell(limit + "; $VELNOR apply red.png -f -o x.png -e " + std::string(effect), folder);
            SCOPED_TRACE(limit + " " + effect + ": " + result.error);
            if (result.code == 0 && megabytes > 60) continue;
            EXPECT_EQ(result.code, 5);
            EXPECT_THAT(result.error, AllOf(StartsWith("velnor: "), HasSubstr("memory"), EndsWith("\n")));
            EXPECT_EQ(std::ranges::count(result.error, '\n'), 1);
        }
}

TEST_F(CommandTest, ListsAndDescribesEffectsOfOtherPluginsToo) {
    EXPECT_THAT(RunWithProbe({"effects"}).out,
                AllOf(HasSubstr("pixelate"), HasSubstr("\n\nOther effects\n"), HasSubstr("Takes the second picture.")));
    std::map<std::string, std::string> kinds;
    for (auto const& effect : nlohmann::json::parse(RunWithProbe({"effects", "--json"}).out))
        kinds[effect["name"]] = effect["kind"];
    EXPECT_EQ(kinds["pixelate"], "one-input");
    EXPECT_EQ(kinds["second"], "two-input");
    EXPECT_EQ(kinds["many"], "var-input");
    EXPECT_EQ(kinds["colorspace-converter"], "one-input");
    for (char const* const name : {"photo.jpg", "second.png"}) ASSERT_EQ(Run({"apply", "red.png", "-o", name}).code, 0);
    for (char const* const name : {"probe", "second", "many"}) {
        std::string const example = nlohmann::json::parse(RunWithProbe({"describe", name, "--json"}).out)["example"];
        EXPECT_EQ(RunShell("$VELNOR " + example.substr(7) + " --force --plugin " VELNOR_PROBE_PLUGIN, folder).code, 0)
            << example;
    }
}

TEST_F(CommandTest, DescriptionsShowTypeUnitRangeDefaultAndResults) {
    EXPECT_THAT(Run({"describe", "pixelate"}).out,
                AllOf(HasSubstr("strength          number, 0 to 100 %, default 80"),
                      HasSubstr("one of fast-bilinear, bilinear"), HasSubstr("-e pixelate:strength=")));
    EXPECT_THAT(
        Run({"describe", "colored-glass"}).out,
        AllOf(testing::ContainsRegex("0.5 to 50 % of the shorter side .the effect accepts[ \n]+0.1 to 100., default 4"),
              HasSubstr("edge-awareness  number, 0 to 100 %, default 60")));
    auto const glass = nlohmann::json::parse(Run({"describe", "colored-glass", "--json"}).out)["parameters"];
    EXPECT_EQ(glass[0]["accepted"], "0.1 to 100");
    EXPECT_EQ(glass[1]["accepted"], "");
    auto const strength = nlohmann::json::parse(Run({"describe", "pixelate", "--json"}).out)["parameters"][0];
    EXPECT_EQ(strength["name"], "strength");
    EXPECT_EQ(strength["unit"], "%");
    EXPECT_EQ(strength["range"], (nlohmann::json{{"low", 0.0}, {"high", 100.0}}));
    EXPECT_EQ(strength["default"], 80);
    EXPECT_THAT(RunWithProbe({"describe", "probe"}).out, HasSubstr("Results\n  first-sample"));
    EXPECT_THAT(RunWithProbe({"describe", "second"}).out, HasSubstr("second:input=second.png"));
}

TEST_F(CommandTest, HelpAndVersionSucceedAndClosedStreamsAreSurvived) {
    CommandResult const help = Run({"--help"});
    EXPECT_EQ(help.code, 0);
    for (char const* line : {"  0    done", "  2    wrong call", "  130  stopped"})
        EXPECT_THAT(help.out, HasSubstr(line));
    EXPECT_THAT(Run({"cutout", "--help"}).out,
                AllOf(HasSubstr("--smooth"), HasSubstr("Value of the strokes on the object"), HasSubstr("VALUE=2 ")));
    EXPECT_THAT(Run({"apply", "--help"}).out, AllOf(HasSubstr("--max-megapixels"), HasSubstr("Exit codes")));
    EXPECT_EQ(Run({"--version"}).out, "velnor " VELNOR_VERSION "\n");

    CommandResult const head = RunShell("$VELNOR --help | head -n 0; echo ${PIPESTATUS[0]}", folder);
    EXPECT_EQ(head.out + head.error, "0\n");
    EXPECT_EQ(RunShell("$VELNOR effects >/dev/full", folder).code, 4);
    EXPECT_EQ(RunShell("$VELNOR effects >&-", folder).code, 4);
    EXPECT_EQ(RunShell("$VELNOR apply red.png -e pixelate -o closed.png <&- >&- 2>&-", folder).code, 0);
    EXPECT_EQ(Look("closed.png"), "rgb24 200 20 10");
}

TEST_F(CommandTest, ProgressIsShownOnATerminalOnly) {
    CommandResult const shown =
        RunShell("TERM=xterm script -qec '$VELNOR apply red.png glass.png -e pixelate -j1 -o out/' /dev/null", folder);
    EXPECT_THAT(shown.out,
                AllOf(testing::ContainsRegex("0 of 2 done [|] [0-9]+ % [|] red.png: pixelate"),
                      testing::ContainsRegex("1 of 2 done [|] [0-9]+ % [|] glass.png: writing"), EndsWith("\r\x1b[K")));
}

} // namespace
} // namespace Velnor::Tool::Testing
