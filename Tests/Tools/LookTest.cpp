// Habits of photographers at the command line, and looks at photographs before the work.
#include "Proc/Host/PictureFile.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Tools/ScratchCommand.h"

#include <algorithm>

namespace Velnor::Tool::Testing {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

class LookTest : public ScratchCommand {
protected:
    /// "WIDTHxHEIGHT" of what the effect makes of the photograph.
    std::string SizeAfter(std::string const& effect) const {
        Out({"apply", Sample("rocket.jpg"), "-f", "-e", effect, "-o", "sized.png"});
        return RunShell("head -c 24 sized.png | tail -c 8 | od -An -tu1 | "
                        "awk '{printf \"%dx%d\", $3 * 256 + $4, $7 * 256 + $8}'",
                        folder)
            .out;
    }
};

TEST_F(LookTest, SizesAreTypedAsPeopleThinkOfThem) { // rocket.jpg is 640 x 427
    for (auto const& [effect, size] : std::vector<std::pair<std::string, std::string>>{
             {"resizer:width=320", "320x214"},
             {"resizer:height=200", "300x200"},
             {"resizer:width=100,height=100", "100x67"},
             {"resizer:width=100,height=100,fitting=fill", "100x100"},
             {"resizer:width=100,height=100,fitting=stretch", "100x100"},
             {"resizer:long-side=800", "800x534"},
             {"resizer:long-side=800,fitting=shrink-inside", "640x427"},
             {"resizer:width=800,fitting=shrink-inside", "640x427"},
             {"rotate:angle=90", "427x640"},
             {"rotate:angle=-90", "427x640"},
             {"rotate:angle=90,output-size-mode=same", "640x427"},
             {"rotate:angle=5", "640x427"},
             {"crop:margins=10,20,30,40", "600x367"},
         })
        EXPECT_EQ(SizeAfter(effect), size) << effect;
    ExpectFailure(4, "goes without width and height",
                  {"apply", Sample("rocket.jpg"), "-e", "resizer:long-side=9,width=3", "-o", "x.png"});
    ExpectFailure(4, "leave nothing of a picture 640 pixels wide",
                  {"apply", Sample("rocket.jpg"), "-e", "crop:margins=600,0,40,0", "-o", "x.png"});
}

TEST_F(LookTest, QuarterTurnsAndFlipsLoseNothing) {
    auto const same = [&](Words const& effects) {
        Words words{"apply", Sample("chelsea.png"), "-f", "-o", "same.png"};
        for (std::string const& effect : effects) words.insert(words.end(), {"-e", effect});
        Out(words);
        Out({"apply", Sample("chelsea.png"), "-f", "-o", "plain.png"});
        return RunShell("cmp -s same.png plain.png", folder).code == 0;
    };
    EXPECT_TRUE(same({"rotate:angle=90", "rotate:angle=90", "rotate:angle=180"}));
    EXPECT_TRUE(same({"flip", "flip"}));
    EXPECT_TRUE(same({"flip:direction=both", "rotate:angle=180"}));
    EXPECT_TRUE(same({"flip", "flip:direction=vertical", "rotate:angle=-180"}));
    EXPECT_FALSE(same({"flip"}));
}

TEST_F(LookTest, TheGreyPointIsReadFromThePhotograph) {
    // A cast of one colour all over: the mean of the disc is that colour.
    Out({"apply", Sample("chelsea.png"), "--to-srgb", "-e", "black-white:first-color=#c8b496,second-color=#c8b496",
         "-o", "cast.png"});
    EXPECT_EQ(Out({"apply", "cast.png", "-e", "white-balance:at=20,30", "-o", "a.png"}),
              "cast.png: white-balance: reference=#c8b496\n");
    EXPECT_EQ(Out({"apply", "cast.png", "-e", "white-balance:reference=rgb(200,180,150)", "-o", "b.png"}), "");
    EXPECT_EQ(RunShell("cmp a.png b.png", folder).code, 0);
    EXPECT_THAT(Out({"apply", "cast.png", "-e", "white-balance:at=50%,50%", "-o", "c.png", "--json"}),
                HasSubstr("#c8b496"));
    ExpectFailure(2, "at: 500,20 lies outside of the picture, which is 451 x 300 pixels",
                  {"apply", "cast.png", "-e", "white-balance:at=500,20", "-o", "x.png"});
    ExpectFailure(2, "is no place such as", {"apply", "cast.png", "-e", "white-balance:at=5", "-o", "x.png"});
    ExpectFailure(2, "at and reference go one without the other",
                  {"apply", "cast.png", "-e", "white-balance:at=5,5,reference=red", "-o", "x.png"});
}

TEST_F(LookTest, CountsOfAHistogramAreForProgramsAlone) {
    EXPECT_THAT(Out({"apply", Sample("chelsea.png"), "-e", "histogram"}),
                AllOf(HasSubstr("luma.mean="), Not(HasSubstr("counts"))));
    Json const report = Json::parse(Out({"apply", Sample("chelsea.png"), "-e", "histogram", "--json"}));
    EXPECT_THAT(report["results"][0]["values"]["luma.counts"], HasSubstr(","));
}

TEST_F(LookTest, CutoutTakesSeveralPhotographsAndWritesMasks) {
    for (char const* const name : {"a", "b"}) {
        Out({"apply", Sample("astronaut.png"), "-e", "resizer:long-side=128", "-o", std::string(name) + ".png"});
        Out({"apply", Sample("astronaut-strokes.png"), "-e", "resizer:long-side=128,method=point", "-o",
             std::string("strokes/") + name + ".png"});
    }
    std::string const out = Out({"cutout", "a.png", "b.png", "--strokes", "strokes/{name}.png", "-o", "cut/{name}.png",
                                 "--mask", "mask-{name}.png", "--json"});
    EXPECT_EQ(std::ranges::count(out, '\n'), 2);
    Json const first = Json::parse(out.substr(0, out.find('\n')));
    EXPECT_EQ(first["outputs"], (Json{"cut/a.png", "mask-a.png"}));
    Out({"apply", "cut/a.png", "-e", "alpha-extractor", "-o", "alpha.pgm"});
    Out({"apply", "mask-a.png", "-o", "mask.pgm"});
    EXPECT_EQ(RunShell("cmp alpha.pgm mask.pgm", folder).code, 0);
    // One that fails leaves the other done.
    std::filesystem::remove(folder / "strokes/a.png");
    CommandResult const part =
        Run({"cutout", "a.png", "b.png", "--strokes", "strokes/", "--mask", "again-{name}.png", "--json"});
    EXPECT_EQ(part.code, 1);
    EXPECT_THAT(part.error, HasSubstr("strokes/a.png"));
    EXPECT_TRUE(std::filesystem::exists(folder / "again-b.png"));
    Json const wrong = Json::parse(Run({"cutout", "a.png", "--json"}).out);
    EXPECT_THAT(wrong["error"], HasSubstr("--strokes is missing"));
}

TEST_F(LookTest, PreviewDrawsInTheTerminal) {
    std::string const blocks = Out({"preview", Sample("rocket.jpg"), "--form", "blocks", "--columns", "40"});
    EXPECT_THAT(blocks, HasSubstr("\x1b[38;2;"));
    EXPECT_EQ(std::ranges::count(blocks, '\n'), 13); // 40 columns of a half each, 640 x 427
    EXPECT_NE(Out({"preview", Sample("rocket.jpg"), "--form", "blocks", "--columns", "40", "-e", "gradient"}), blocks);
    EXPECT_THAT(Out({"preview", Sample("rocket.jpg"), "--form", "sixel"}), HasSubstr("\x1bP"));
    EXPECT_THAT(Out({"preview", Sample("rocket.jpg"), "--form", "kitty", "--recipe", "noir"}), HasSubstr("\x1b_G"));
    ExpectFailure(2, "did you mean sixel?", {"preview", Sample("rocket.jpg"), "--form", "sixels"});
}

TEST_F(LookTest, SmallReadingShrinksJpegByEighthsAtMost) {
    Proc::StandardHost const host;
    Out({"apply", Sample("rocket.jpg"), "-e", "resizer:width=2000", "-o", "large.jpg"}); // 2000 x 1334
    for (auto const& [enough, width] : {std::pair{0U, 2000U}, {1500U, 2000U}, {1000U, 1000U}, {300U, 500U}, {1U, 250U}})
        EXPECT_EQ(Proc::ReadPicture(folder / "large.jpg", *host.GetContext(), {.enoughSide = enough})
                      .picture->GetFrameFormat()
                      .width,
                  width)
            << enough;
}

TEST_F(LookTest, GalleryIsOnePageWithCommandsThatRun) {
    Out({"gallery", Sample("chelsea.png"), "-e", "pixelate", "-e", "alpha-inserter", "-o", "page.html"});
    std::string const page = RunShell("cat page.html", folder).out;
    EXPECT_THAT(page, Not(HasSubstr("src=\"http")));
    EXPECT_THAT(page, HasSubstr("-e pixelate:strength=25 -o out.jpg</code>"));
    EXPECT_THAT(page, HasSubstr("mask.png cannot be read"));
    EXPECT_EQ(RunShell("grep -c '<img ' page.html", folder).out, "4\n"); // The photograph and three strengths.
    ExpectFailure(4, "exists already", {"gallery", Sample("chelsea.png"), "-o", "page.html"});
    ExpectFailure(2, "did you mean pixelate", {"gallery", Sample("chelsea.png"), "-e", "pixelat", "-o", "x.html"});

    std::string const chromium = RunShell("command -v chromium", folder).out;
    if (chromium.empty()) GTEST_SKIP() << "chromium, of the group \"browser\", is not here to open the page";
    CommandResult const seen = RunShell("timeout 120 chromium --headless --no-sandbox --disable-gpu "
                                        "--user-data-dir=profile --dump-dom file://$PWD/page.html",
                                        folder);
    EXPECT_EQ(seen.code, 0) << seen.error;
    EXPECT_THAT(seen.out, HasSubstr("<h3 id=\"pixelate\">"));
    // Every picture is one, and a click on a button copies the command beside it. The page is loaded when all are.
    std::string const script =
        "<script>const all = [...document.images]; let copied = ''; all.forEach(one => { one.loading = 'eager'; }); "
        "Object.defineProperty(navigator, 'clipboard', {value: {writeText: async text => { copied = text; }}}); "
        "addEventListener('load', () => { document.querySelector('button').click(); "
        "document.title = all.filter(one => one.naturalWidth > 0).length + ' seen, ' + copied.slice(0, 12); "
        "});</script>";
    MakeText("seen.html", page + script);
    EXPECT_THAT(RunShell("timeout 120 chromium --headless --no-sandbox --disable-gpu --user-data-dir=profile "
                         "--dump-dom file://$PWD/seen.html",
                         folder)
                    .out,
                HasSubstr("<title>4 seen, velnor apply</title>"));
}

} // namespace
} // namespace Velnor::Tool::Testing
