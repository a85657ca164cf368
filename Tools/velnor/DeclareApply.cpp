#include "Tools/velnor/ApplyCommand.h"
#include "Tools/velnor/Command.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/OptionGroups.h"
#include "Tools/velnor/RecipeCommand.h"
#include "Tools/velnor/RecipeStore.h"

#include <memory>

namespace Velnor::Tool {
namespace {

constexpr char const* EFFECT_SYNTAX =
    R"(An effect is written NAME[/IMPLEMENTATION][:PARAMETER=VALUE,PARAMETER=VALUE...]:
  -e pixelate                     with its default parameters
  -e pixelate:strength=40,method-upscale=bilinear
  -e white-balance:reference=#c8b496
Effects run left to right. `velnor effects` lists them, `velnor describe EFFECT` shows the parameters of one.
An effect on two pictures reads the second from its parameter input=FILE. One on any number of pictures joins all
photographs, and every input=FILE, which may be repeated; -o then names one output. Effects after one that cuts
the photograph into pieces run on each piece, until one joins them. A file name with a comma and an equals sign
is quoted: input="a,b=c.jpg". What effects find out is printed, "photograph: effect: name=value" a line;
with --json each photograph is one line, an object. Colours mean sRGB: for a photograph with another colour profile
they are converted to it.)";

struct Given {
    ApplyOptions options;
    RecipeUse recipes;
    LogOptions log;
};

Proc::Color ParseColor(std::string const& text) {
    try {
        return Proc::TextForm<Proc::Color>::Parse(text);
    } catch (Proc::SettingsTextException const& error) {
        throw WrongCall("--background: " + DescribeException(error));
    }
}

ExitCode Run(Given const& given) {
    if (given.options.photos.empty()) throw WrongCall("apply: no photograph is given");
    ApplyOptions options = given.options;
    options.isVerbose = given.log.Start();
    for (std::string const& recipe : given.recipes.recipes)
        options.recipes.push_back(FindRecipe(recipe, options.photos.front()));
    std::vector<std::string> const before =
        UseRecipes(given.recipes.recipes, given.recipes.values, options.photos.front());
    options.effects.insert(options.effects.begin(), before.begin(), before.end());
    return RunApply(options);
}

} // namespace

Command DeclareApply(CLI::App& app) {
    auto const given = std::make_shared<Given>();
    ApplyOptions& options = given->options;
    CLI::App* const apply = app.add_subcommand("apply", "Run effects on photographs and write the results");
    apply
        ->add_option("photos", options.photos,
                     "Photographs to read; folders with --recursive; @FILE and @- stand for the names in a list; - is "
                     "standard input, and after -- names may begin with a dash")
        ->type_name("PHOTO");
    AddEffectOption(*apply, options.effects);
    AddRecipeOptions(*apply, given->recipes);
    apply
        ->add_option(
            "-o,--output", options.output,
            "File to write; a folder (out/) for several photographs, or a pattern with {name}, {index}, "
            "{folder} and {ext}, and {x} and {y} of the pieces that an effect cuts a photograph into. Folders that are "
            "missing are made. - is standard output. Not needed with effects that only find something out")
        ->type_name("OUT");
    apply->add_option("--to", options.format, "Format of the picture on standard output, by extension: png, jpg, ...")
        ->type_name("FORMAT");
    AddWritingOptions(*apply, options.files);
    AddReadingOptions(*apply, options.files);
    AddBatchOptions(*apply, options.batch);
    apply
        ->add_option_function<std::string>(
            "--background",
            [&options](std::string const& color) { options.files.writing.background = ParseColor(color); },
            "What transparency is laid on where the format has none; else white")
        ->type_name("COLOR");
    apply->add_flag("--stats", options.showStatistics, "Print each effect's statistics to standard error at the end");
    AddLogOptions(*apply, given->log);
    AddJsonOption(*apply, options.asJson);
    AddPluginOption(*apply, options.plugins);
    apply->footer(std::string(EFFECT_SYNTAX) + "\n\n" + EXIT_CODES);
    return {apply, [given] { return Run(*given); }};
}

} // namespace Velnor::Tool
