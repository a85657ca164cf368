#include "Tests/Tools/ScratchCommand.h"

#include <algorithm>

namespace Velnor::Tool::Testing {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;

class RecipeTest : public ScratchCommand {
protected:
    RecipeTest() { setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1); }
    ~RecipeTest() override { unsetenv("XDG_CONFIG_HOME"); }

    void MakePhoto() const { Out({"apply", Sample("coffee.png"), "-e", "resizer:long-side=120", "-o", "photo.png"}); }
    /// Whether two calls of apply make the same picture.
    void ExpectSame(Words first, Words second) const {
        for (auto* const words : {&first, &second}) {
            words->insert(words->begin(), {"apply", "photo.png"});
            words->insert(words->end(), {"-f", "-o", words == &first ? "first.png" : "second.png"});
            Out(*words);
        }
        EXPECT_EQ(RunShell("cmp first.png second.png", folder).code, 0) << testing::PrintToString(first);
        EXPECT_NE(RunShell("cmp -s first.png photo.png", folder).code, 0) << testing::PrintToString(first);
    }
};

TEST_F(RecipeTest, IsSavedListedShownAndRun) {
    MakePhoto();
    Words const chain{"-e", "gradient:stops=0:#102040,256:#f0c080", "-e", "pixelate:strength=30"};
    EXPECT_EQ(Out({"recipe", "save", "dusk", "-e", chain[1], "-e", chain[3], "--description", "Dusk"}),
              (folder / "config/velnor/recipes/dusk.json").string() + "\n");
    ExpectSame({"--recipe", "dusk"}, chain);
    ExpectSame({"--recipe", "dusk", "-e", "blur"}, {chain[0], chain[1], chain[2], chain[3], "-e", "blur"});
    EXPECT_THAT(Out({"recipe", "list"}), AllOf(HasSubstr("dusk"), HasSubstr("Dusk (yours)"), HasSubstr("old-print")));
    Json const shown = Json::parse(Out({"recipe", "show", "dusk"}));
    EXPECT_EQ(shown["version"], 1);
    EXPECT_EQ(shown["effects"][1]["parameters"]["strength"], 30);
    ExpectFailure(4, "exists already", {"recipe", "save", "dusk", "-e", "blur"});
    Out({"recipe", "save", "dusk", "-e", "blur", "--force"});
    ExpectFailure(2, "is no name for one", {"recipe", "save", "../dusk", "-e", "blur"});
    ExpectFailure(2, "did you mean strength?", {"recipe", "save", "x", "-e", "pixelate:strenght=3"});
    ExpectFailure(2, "no command is given; there is save, list", {"recipe"});
}

TEST_F(RecipeTest, LiesBesideThePhotographsAndNamesFilesBesideItself) {
    MakePhoto();
    fs::create_directory(folder / "trip");
    fs::rename(folder / "photo.png", folder / "trip/photo.png");
    fs::copy(folder / "trip/photo.png", folder / "trip/logo.png");
    MakeText("trip/mark.json", R"({"version": 1, "effects": [{"effect": "image-blender",
        "parameters": {"input": "logo.png", "position-x": 30}}]})");
    Out({"apply", "trip/photo.png", "--recipe", "mark", "-o", "marked.png"});
    EXPECT_THAT(Out({"recipe", "check", "trip/mark.json"}), HasSubstr("trip/mark.json: good: image-blender"));
}

TEST_F(RecipeTest, VariablesTakeValues) {
    MakePhoto();
    MakeText("v.json", R"({"version": 1, "variables": {"block": {"default": 20}, "tone": {}}, "effects": [
        {"effect": "pixelate", "parameters": {"strength": "{block}"}},
        {"effect": "gradient", "parameters": {"stops": "0:{tone},256:#ffffff"}}]})");
    ExpectSame({"--recipe", "v.json", "--set", "tone=#200000"},
               {"-e", "pixelate:strength=20", "-e", "gradient:stops=0:#200000,256:#ffffff"});
    ExpectSame({"--recipe", "v.json", "--set", "tone=navy", "--set", "block=50"},
               {"-e", "pixelate:strength=50", "-e", "gradient:stops=0:navy,256:#ffffff"});
    Words const call{"apply", "photo.png", "-o", "x.png", "--recipe", "v.json"};
    auto const fails = [&](std::string const& text, Words const& more) {
        Words words = call;
        words.insert(words.end(), more.begin(), more.end());
        ExpectFailure(2, text, words);
    };
    fails("the variable tone has no value; --set tone=VALUE gives one", {});
    fails("--set blok: there is no such variable; did you mean block?", {"--set", "blok=3", "--set", "tone=red"});
    fails("pixelate: strength: 300 is outside the range 0 to 100", {"--set", "block=300", "--set", "tone=red"});
    fails("a variable is set as NAME=VALUE", {"--set", "block"});
    EXPECT_EQ(Run({"recipe", "check", "v.json"}).code, 0);
}

TEST_F(RecipeTest, WhatIsWrongIsSaidByName) {
    struct Case {
        char const* text;
        int code;
        char const* message;
    };
    for (auto const& [text, code, message] : {
             Case{"{", 3, "bad.json is no JSON"},
             Case{"[]", 3, "the recipe is no object"},
             Case{R"({"effects": []})", 3, "version is missing"},
             Case{R"({"version": 2, "effects": []})", 3, "it is of version 2; this velnor knows version 1"},
             Case{R"({"version": 1, "efects": []})", 3, "no member \"efects\"; did you mean effects?"},
             Case{R"({"version": 1, "effects": []})", 3, "effects is no list with one effect or more"},
             Case{R"({"version": 1, "effects": [{"efect": "blur"}]})", 3, "effect 1 has no member \"efect\""},
             Case{R"({"version": 1, "effects": [{"effect": "blurr"}]})", 2, "did you mean blur"},
             Case{R"({"version": 1, "effects": [{"effect": "blur", "parameters": {"dev": 1}}]})", 2,
                  "blur has no parameter \"dev\""},
             Case{R"({"version": 1, "effects": [{"effect": "pixelate", "parameters": {"strength": 101}}]})", 2,
                  "outside the range 0 to 100"},
             Case{R"({"version": 1, "effects": [{"effect": "pixelate", "parameters": {"strength": [1]}}]})", 3,
                  "effect 1: strength is no text, number or switch"},
             Case{R"({"version": 1, "effects": [{"effect": "grab-cut"}]})", 2, "works on two pictures"},
             Case{R"({"version": 1, "variables": {"a": {}}, "effects": [{"effect": "blur",
                  "parameters": {"dev-x": "{b}"}}]})",
                  2, "there is no variable \"b\"; did you mean a?"},
         }) {
        MakeText("bad.json", text);
        ExpectFailure(code, message, {"recipe", "check", "bad.json"});
    }
    ExpectFailure(2, "there is no recipe \"old-prin\"; did you mean old-print?", {"recipe", "show", "old-prin"});
    ExpectFailure(3, "none.json cannot be read", {"recipe", "check", "none.json"});
}

TEST_F(RecipeTest, ShippedOnesAreGoodAndFollowTheSchema) {
    MakePhoto();
    MakeText("schema.json", Out({"recipe", "schema"}));
    Json const list = Json::parse(Out({"recipe", "list", "--json"}));
    EXPECT_GE(list.size(), 12U);
    bool const canValidate = RunShell("/usr/bin/python3 -c 'import jsonschema'", folder).code == 0;
    std::string const validate = "/usr/bin/python3 -c 'import json, jsonschema, sys; "
                                 "schema = json.load(open(\"schema.json\")); "
                                 "jsonschema.Draft202012Validator.check_schema(schema); "
                                 "jsonschema.Draft202012Validator(schema).validate(json.load(open(sys.argv[1])))' ";
    for (Json const& recipe : list) {
        std::string const file = recipe["file"];
        std::string const name = recipe["name"];
        EXPECT_THAT(Out({"recipe", "check", file}), HasSubstr("good"));
        EXPECT_EQ(recipe["origin"], "shipped");
        CommandResult const run = Run({"apply", "photo.png", "--recipe", name, "-o", name + ".png"});
        EXPECT_EQ(run.code, 0) << name << run.error;
        if (canValidate) {
            EXPECT_EQ(RunShell(validate + "'" + file + "'", folder).error, "") << name;
        }
    }
    if (!canValidate) GTEST_SKIP() << "there is no validator of JSON Schema for Python here";
    for (char const* const bad :
         {R"({"version": 1, "effects": [{"effect": "blurr"}]})", R"({"effects": []})",
          R"({"version": 1, "effects": [{"effect": "pixelate", "parameters": {"strength": 101}}]})",
          R"({"version": 1, "effects": [{"effect": "pixelate", "parameters": {"s": 1}}]})"}) {
        MakeText("bad.json", bad);
        EXPECT_THAT(RunShell(validate + "bad.json", folder).error, HasSubstr("ValidationError")) << bad;
    }
}

} // namespace
} // namespace Velnor::Tool::Testing
