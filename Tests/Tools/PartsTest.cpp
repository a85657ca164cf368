#include "Proc/Host/FatalError.h"
#include "Proc/Host/PictureFile.h"
#include "Tools/velnor/EffectArgument.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/LastWords.h"
#include "Tools/velnor/OutputNames.h"
#include "Tools/velnor/Suggestions.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <new>
#include <system_error>
#include <thread>

namespace Velnor::Tool {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Parameter = EffectArgument::Parameter;

template <class Call>
std::string WrongCallOf(Call const& call) {
    try {
        call();
    } catch (Failure const& failure) {
        EXPECT_EQ(failure.GetCode(), ExitCode::WrongCall);
        return failure.what();
    }
    return "nothing was thrown";
}

TEST(EffectArgumentTest, TakesNameImplementationAndParametersApart) {
    EffectArgument const plain = ParseEffectArgument("pixelate");
    EXPECT_EQ(plain.name, "pixelate");
    EXPECT_EQ(plain.implementation, "");
    EXPECT_THAT(plain.parameters, IsEmpty());

    EffectArgument const full = ParseEffectArgument("oil-paint/ImageMagick:radius=3,shape.feather=40");
    EXPECT_EQ(full.name, "oil-paint");
    EXPECT_EQ(full.implementation, "ImageMagick");
    EXPECT_THAT(full.parameters, ElementsAre(Parameter{"radius", "3"}, Parameter{"shape.feather", "40"}));
}

TEST(EffectArgumentTest, PartsWithoutEqualsSignGoOnWithTheValueBefore) {
    EXPECT_THAT(ParseEffectArgument("gradient:stops=0:#102040,128:#c08040,bypass=no").parameters,
                ElementsAre(Parameter{"stops", "0:#102040,128:#c08040"}, Parameter{"bypass", "no"}));
    EXPECT_THAT(ParseEffectArgument("x:input=a,b/c:d.jpg").parameters, ElementsAre(Parameter{"input", "a,b/c:d.jpg"}));
    EXPECT_THAT(ParseEffectArgument("x:input=a,input=b").parameters,
                ElementsAre(Parameter{"input", "a"}, Parameter{"input", "b"}));
    EXPECT_THAT(ParseEffectArgument("x:a=,b==,").parameters, ElementsAre(Parameter{"a", ""}, Parameter{"b", "=,"}));
}

TEST(EffectArgumentTest, QuotedValuesMayHoldCommasAndEqualsSigns) {
    EXPECT_THAT(ParseEffectArgument("x:input=\"a,b=c.jpg\",input='\"',d=\"\"").parameters,
                ElementsAre(Parameter{"input", "a,b=c.jpg"}, Parameter{"input", "\""}, Parameter{"d", ""}));
    EXPECT_THAT(ParseEffectArgument("x:a='it''s, b=c',b=5\" disk").parameters,
                ElementsAre(Parameter{"a", "it's, b=c"}, Parameter{"b", "5\" disk"}));
    for (char const* text : {"x:a=\"b", "x:a=\"", "x:a='b'c,d=e", "x:a='b''"})
        EXPECT_THAT(WrongCallOf([&] { ParseEffectArgument(text); }), HasSubstr("a value that begins with")) << text;
}

TEST(EffectArgumentTest, RefusesWhatCannotBeMeant) {
    for (char const* text : {"", ":a=1", "/velnor"})
        EXPECT_THAT(WrongCallOf([&] { ParseEffectArgument(text); }), HasSubstr("names no effect")) << text;
    EXPECT_THAT(WrongCallOf([] { ParseEffectArgument("x/:a=1"); }), HasSubstr("implementation is missing"));
    for (char const* text : {"x:80", "x:", "x:=5", "x:a=1,=5"})
        EXPECT_THAT(WrongCallOf([&] { ParseEffectArgument(text); }), HasSubstr("is no parameter=value")) << text;
    EXPECT_THAT(WrongCallOf([] { ParseEffectArgument("x:a=1,b=2,a=3"); }), HasSubstr("x: a is given twice"));
}

TEST(SuggestionsTest, DistanceCountsInsertionsDeletionsReplacementsAndSwaps) {
    EXPECT_EQ(EditDistance("", "abc"), 3u);
    EXPECT_EQ(EditDistance("kitten", "sitting"), 3u);
    EXPECT_EQ(EditDistance("strenght", "strength"), 1u);
    EXPECT_EQ(EditDistance("ca", "abc"), 3u); // No letters between two that were swapped.
    EXPECT_EQ(EditDistance("same", "same"), 0u);
}

TEST(SuggestionsTest, NearestNamesComeFirstAndFarOnesNotAtAll) {
    std::vector<std::string> const names{"white-balance", "pixelate", "vignette", "posterize", "color-balance-auto"};
    EXPECT_THAT(FindNearest("Pixellate", names), ElementsAre("pixelate"));
    EXPECT_THAT(FindNearest("vinetee", names), ElementsAre("vignette")); // Three letters off.
    EXPECT_THAT(FindNearest("balance", names), ElementsAre("white-balance", "color-balance-auto"));
    EXPECT_THAT(FindNearest("qqqqqqqq", names), IsEmpty());
    EXPECT_THAT(FindNearest("", names), IsEmpty());
    EXPECT_EQ(SuggestNearest("qqq", {"name", "ext"}), "; there is name and ext");
    EXPECT_EQ(SuggestNearest("qqq", {"name", "ext"}, "look"), "; look");
    EXPECT_EQ(JoinAlternatives({"a", "b", "c"}), "a, b or c");
}

std::vector<OutputPlan> PlanOutputs(std::vector<std::string> const& photos, std::string const& output,
                                    bool areJoined = false, std::string const& fallback = {}) {
    PhotoNames names;
    for (std::string const& photo : photos) names.Add({photo});
    OutputNaming const naming(output, areJoined ? 1 : photos.size(), fallback);
    auto const makeReader = [&] { return PlanReader(names, naming, areJoined); };
    if (!output.empty() && !areJoined) RequireApart(makeReader);
    std::vector<OutputPlan> plans;
    PlanReader reader = makeReader();
    while (std::optional<OutputPlan> plan = reader.Next()) plans.push_back(*plan);
    return plans;
}

std::vector<std::string> NamesOf(std::vector<std::string> const& photos, std::string const& output) {
    std::vector<std::string> names;
    for (OutputPlan const& plan : PlanOutputs(photos, output)) names.push_back(plan.output.string());
    return names;
}

TEST(OutputNamesTest, FileFolderAndPattern) {
    EXPECT_THAT(NamesOf({"a/x.jpg"}, "y.png"), ElementsAre("y.png"));
    EXPECT_THAT(NamesOf({"a/x.jpg", "b/y.png"}, "out dir/"), ElementsAre("out dir/x.jpg", "out dir/y.png"));
    EXPECT_THAT(NamesOf({"a/x.jpg", "b/x.tar.JPG"}, "{ext}/{name}-{index}.png"),
                ElementsAre("jpg/x-1.png", "JPG/x.tar-2.png"));
    std::vector<std::string> const ten(10, "x.jpg");
    EXPECT_EQ(NamesOf(ten, "{index}.jpg").front(), "01.jpg");
    std::vector<OutputPlan> const plans = PlanOutputs({"a/x.GIF", "y.jpg", "z"}, "o/", false, "webp");
    EXPECT_EQ(plans[0].output.string() + plans[1].output.string() + plans[2].output.string(),
              "o/x.webpo/y.jpgo/z.webp");
    EXPECT_EQ(NamesOf({"{name}.jpg"}, "o/{name}.jpg").front(), "o/{name}.jpg"); // Not filled in a second time.
}

TEST(OutputNamesTest, PiecesAreNamedByTheirPlace) {
    std::vector<Place> const places{{0, 0}, {256, 0}, {0, 100}};
    OutputPlan const plan = PlanOutputs({"a.jpg", "b{x}.jpg"}, "o/{index}-{name}-{y}-{x}.png")[1];
    EXPECT_EQ(plan.output, "o/2-b{x}-0-0.png");
    EXPECT_THAT(NamePieces(plan, places),
                ElementsAre("o/2-b{x}-000-000.png", "o/2-b{x}-000-256.png", "o/2-b{x}-100-000.png"));
    EXPECT_THAT(NamePieces(PlanOutputs({"a.jpg"}, "b.png")[0], {{7, 8}}), ElementsAre("b.png"));
    EXPECT_THAT(WrongCallOf([&] { NamePieces(PlanOutputs({"a.jpg"}, "{x}.png")[0], places); }),
                HasSubstr("a.jpg becomes 3 pictures, and -o {x}.png gives several of them one name"));
    EXPECT_EQ(PlanOutputs({"a.jpg", "b.jpg"}, "")[1].output, "");
    std::vector<OutputPlan> const joined = PlanOutputs({"a/1.jpg", "b/2.jpg"}, "o/{name}{index}.png", true);
    ASSERT_EQ(joined.size(), 1U);
    EXPECT_THAT(joined[0].inputs, ElementsAre("a/1.jpg", "b/2.jpg"));
    EXPECT_EQ(joined[0].output, "o/11.png");
}

TEST(OutputNamesTest, RefusesPatternsAndCollisions) {
    auto const error = [](std::vector<std::string> const& photos, std::string const& output) {
        return WrongCallOf([&] { PlanOutputs(photos, output); });
    };
    EXPECT_THAT(error({"x.jpg"}, "{nam}.jpg"), HasSubstr("\"{nam}\" means nothing"));
    EXPECT_THAT(error({"x.jpg"}, "{nam}.jpg"), HasSubstr("did you mean name?"));
    EXPECT_THAT(error({"x.jpg"}, "a{name"), HasSubstr("\"{name\" means nothing"));
    EXPECT_THAT(error({"x.jpg"}, "{name}/"), HasSubstr("gives a folder"));
    EXPECT_THAT(error({"x.jpg", "y.jpg"}, "one.jpg"), HasSubstr("is one file for 2 photographs"));
    EXPECT_THAT(error({"a/x.jpg", "b/x.jpg"}, "out/"), HasSubstr("a/x.jpg and b/x.jpg would both become out/x.jpg"));
    EXPECT_THAT(error({"a/x.jpg", "b/y.jpg"}, "o/../{name}/../same.jpg"), HasSubstr("would both become"));
    EXPECT_THAT(error({"2.jpg", "1.jpg"}, "{index}.jpg"), HasSubstr("the output of 1.jpg would replace 2.jpg"));
    EXPECT_THAT(NamesOf({"1.jpg", "2.jpg"}, "./{index}.jpg"), ElementsAre("./1.jpg", "./2.jpg"));
}

TEST(FailureTest, ReportsAreOneLineWhateverIsThrown) {
    EXPECT_EQ(ToOneLine("a\nb\x1b[2Jc."), "a b [2Jc");
    auto const report = [](auto const& error) {
        try {
            throw error;
        } catch (...) {
            Report const made = ReportCurrentException();
            return std::to_string(static_cast<int>(made.code)) + " " + made.text;
        }
    };
    EXPECT_THAT(report(std::bad_alloc()), HasSubstr("5 there is not enough memory"));
    EXPECT_THAT(report(std::system_error(EAGAIN, std::generic_category())), HasSubstr("5 there is not enough memory"));
    EXPECT_THAT(report(std::system_error(EIO, std::generic_category())), HasSubstr("4 "));
    EXPECT_THAT(report(Proc::FileMemoryException()), HasSubstr("; --max-memory raises it"));
    EXPECT_THAT(report(Proc::FileExpansionException()), HasSubstr("; --max-expansion raises it"));
    EXPECT_THAT(report(Proc::FileLimitException()), testing::Not(HasSubstr("raises it")));
    EXPECT_THAT(report(5), HasSubstr("4 "));
}

TEST(LastWordsDeathTest, WhatWouldEndTheProcessEndsItWithALine) {
    testing::FLAGS_gtest_death_test_style = "threadsafe"; // One of them starts a thread.
    auto const dies = [](auto const& action, char const* line) {
        EXPECT_EXIT(
            {
                PrepareLastWords();
                action();
            },
            testing::ExitedWithCode(5), line);
    };
    dies([] { Proc::GetFatalErrorHandler()("gmem.c:136: failed to allocate 9 bytes"); },
         "^velnor: there is not enough memory\n$");
    dies([] { Proc::GetFatalErrorHandler()("oil and\nwater"); }, "^velnor: a library gave up: oil and\n$");
    dies([] { std::thread([] { throw std::bad_alloc(); }).join(); }, "^velnor: there is not enough memory\n$");
}

} // namespace
} // namespace Velnor::Tool
