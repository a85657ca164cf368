#include "Tools/velnor/Command.h"
#include "Tools/velnor/Console.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/ListCommands.h"
#include "Tools/velnor/OptionGroups.h"

#include <memory>

namespace Velnor::Tool {
namespace {

struct Given {
    std::string effect;              ///< To describe.
    std::vector<std::string> wanted; ///< Words to search for.
    std::vector<std::string> plugins;
    bool asJson = false;
    bool asSchema = false;
};

} // namespace

Command DeclareEffects(CLI::App& app) {
    auto const given = std::make_shared<Given>();
    CLI::App* const effects = app.add_subcommand("effects", "List the effects that there are, by family");
    effects
        ->add_option("--search", given->wanted,
                     "Only effects with this word in name, family or summary, or known to other programs by it; may be "
                     "repeated")
        ->type_name("WORD")
        ->allow_extra_args(false);
    AddJsonOption(*effects, given->asJson);
    AddPluginOption(*effects, given->plugins);
    return {effects, [given] {
                Print(ListEffects(given->plugins, given->wanted, given->asJson));
                return ExitCode::Done;
            }};
}

Command DeclareDescribe(CLI::App& app) {
    auto const given = std::make_shared<Given>();
    CLI::App* const describe = app.add_subcommand("describe", "Show the parameters of an effect");
    describe->add_option("effect", given->effect, "Name of the effect")->type_name("EFFECT");
    describe->add_flag("--schema", given->asSchema,
                       "Print the JSON Schema of a step with this effect; without one, with any effect");
    AddJsonOption(*describe, given->asJson);
    AddPluginOption(*describe, given->plugins);
    return {describe, [given] {
                if (given->effect.empty() && !given->asSchema)
                    throw WrongCall("describe: no effect is given; `velnor effects` lists what there is");
                Print(given->asSchema ? FormatSchema(given->effect, given->plugins)
                                      : DescribeEffect(given->effect, given->plugins, given->asJson));
                return ExitCode::Done;
            }};
}

} // namespace Velnor::Tool
