#include "Tools/velnor/Command.h"
#include "Tools/velnor/CutoutCommand.h"
#include "Tools/velnor/OptionGroups.h"

#include <memory>

namespace Velnor::Tool {
namespace {

struct Given {
    CutoutOptions options;
    LogOptions log;
};

} // namespace

Command DeclareCutout(CLI::App& app) {
    auto const given = std::make_shared<Given>();
    CutoutOptions& options = given->options;
    CLI::App* const cutout = app.add_subcommand("cutout", "Cut an object out by strokes on it and on its background");
    cutout->add_option("photos", options.photos, "Photographs to read")->type_name("PHOTO");
    cutout
        ->add_option("--strokes", options.strokes,
                     "Picture of the photograph's size with a few strokes: of one grey on the object, of another on "
                     "the background, black elsewhere; a folder, or a pattern with {name} as of -o, for several")
        ->type_name("STROKES");
    cutout
        ->add_option("-o,--output", options.output,
                     "File to write, of a format with transparency; a folder (out/) or a pattern with {name}, {index} "
                     "and {ext} for several photographs")
        ->type_name("OUT");
    cutout
        ->add_option("--mask", options.mask,
                     "File to write the mask to, a grey picture, white on the object; as -o, and without it alone")
        ->type_name("OUT");
    for (CutoutOptions::Setting& setting : options.settings)
        cutout->add_option("--" + setting.name, setting.value, DescribeCutoutSetting(setting.name))
            ->type_name("VALUE")
            ->capture_default_str();
    cutout->add_option("--feather", options.feather, "Softness of the edge, in pixels: 0 is hard")
        ->check(Within(0.0, 100.0))
        ->type_name("N")
        ->capture_default_str();
    AddWritingOptions(*cutout, options.files);
    AddReadingOptions(*cutout, options.files);
    AddLogOptions(*cutout, given->log);
    AddJsonOption(*cutout, options.asJson);
    AddPluginOption(*cutout, options.plugins);
    cutout->footer(std::string("  velnor cutout photo.jpg --strokes strokes.png -o object.png\n"
                               "  velnor cutout *.jpg --strokes 'strokes/{name}.png' -o 'cut/{name}.png'\n\n") +
                   EXIT_CODES);
    return {cutout, [given] {
                given->log.Start();
                return RunCutout(given->options);
            }};
}

} // namespace Velnor::Tool
