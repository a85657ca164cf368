#include "Tools/velnor/Command.h"
#include "Tools/velnor/Console.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/LookCommands.h"
#include "Tools/velnor/OptionGroups.h"
#include "Tools/velnor/RecipeCommand.h"
#include "Tools/velnor/Suggestions.h"

#include <memory>
#include <utility>

namespace Velnor::Tool {
namespace {

TerminalForm ParseForm(std::string const& form) {
    for (auto const& [name, value] :
         {std::pair{"blocks", TerminalForm::Blocks}, std::pair{"sixel", TerminalForm::Sixel},
          std::pair{"kitty", TerminalForm::Kitty}, std::pair{"auto", TerminalForm::Auto}})
        if (form == name) return value;
    throw WrongCall("--form: there is no \"" + form + "\"" +
                    SuggestNearest(form, {"auto", "blocks", "sixel", "kitty"}));
}

} // namespace

Command DeclarePreview(CLI::App& app) {
    struct Given {
        PreviewOptions options;
        RecipeUse recipes;
    };
    auto const given = std::make_shared<Given>();
    PreviewOptions& options = given->options;
    CLI::App* const preview = app.add_subcommand("preview", "Show a photograph through effects in the terminal");
    preview->add_option("photo", options.photo, "Photograph to read")->type_name("PHOTO");
    AddEffectOption(*preview, options.effects);
    AddRecipeOptions(*preview, given->recipes);
    preview
        ->add_option_function<std::string>(
            "--form", [&options](std::string const& form) { options.form = ParseForm(form); },
            "How the terminal shows it; auto, which is the default, is the best that it is known to have")
        ->type_name("auto|blocks|sixel|kitty");
    preview->add_option("--columns", options.columns, "Width, in characters; else the terminal is filled")
        ->check(Within(1, 1000))
        ->type_name("N");
    AddReadingOptions(*preview, options.files);
    AddPluginOption(*preview, options.plugins);
    preview->footer("  velnor preview photo.jpg -e vignette\n\nThe photograph is read small, 800 pixels on its longer "
                    "side at most: sizes in pixels among the parameters are those of the small picture.");
    return {preview, [given] {
                PreviewOptions call = given->options;
                std::vector<std::string> const before =
                    UseRecipes(given->recipes.recipes, given->recipes.values, call.photo);
                call.effects.insert(call.effects.begin(), before.begin(), before.end());
                Print(DrawPreview(call));
                return ExitCode::Done;
            }};
}

Command DeclareGallery(CLI::App& app) {
    auto const options = std::make_shared<GalleryOptions>();
    CLI::App* const gallery = app.add_subcommand("gallery", "Write a page with a photograph through all effects");
    gallery->add_option("photo", options->photo, "Photograph to read")->type_name("PHOTO");
    gallery
        ->add_option("-e,--effect", options->effects,
                     "Effect to show, by its name; may be repeated. Else all, and "
                     "the recipes")
        ->type_name("EFFECT")
        ->allow_extra_args(false);
    gallery->add_option("-o,--output", options->output, "Page to write, one file that needs no other")
        ->type_name("OUT");
    gallery->add_flag("-f,--force", options->files.writing.overwrite, "Replace a page that exists already");
    AddReadingOptions(*gallery, options->files);
    AddPluginOption(*gallery, options->plugins);
    gallery->footer("  velnor gallery photo.jpg -o gallery.html\n\nEach effect is shown at three strengths, with the "
                    "command that makes the picture and a button that copies it. Effects on several pictures are shown "
                    "when -e names them.");
    return {gallery, [options] {
                WriteGallery(*options);
                return ExitCode::Done;
            }};
}

} // namespace Velnor::Tool
