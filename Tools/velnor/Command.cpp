#include "Tools/velnor/Command.h"

#include "Tools/velnor/HelpFormatter.h"

#include <algorithm>
#include <iterator>
#include <memory>

namespace Velnor::Tool {

char const* const EXIT_CODES = R"(Exit codes:
  0    done
  1    of several photographs some failed, the others are done
  2    wrong call: unknown effect or parameter, value of the wrong type or outside its range
  3    an input is missing, damaged or no picture
  4    an output exists already, could not be made or could not be written; a plug-in breaks a promise
  5    over a limit, such as --max-megapixels or --max-memory, or out of memory
  130  stopped, by Ctrl-C or a signal
When several photographs are given and none could be done, the code is that of the first failure.)";

std::vector<Command> DeclareCommands(CLI::App& app) {
    app.footer(EXIT_CODES);
    app.formatter(std::make_shared<HelpFormatter>()); // The commands take it over.
    std::vector<Command> commands{DeclareApply(app), DeclareCutout(app), DeclareEffects(app), DeclareDescribe(app),
                                  DeclareCheck(app)};
    std::ranges::move(DeclareRecipe(app), std::back_inserter(commands));
    for (auto const declare : {DeclarePreview, DeclareGallery, DeclareManual, DeclareCompletion, DeclareComplete})
        commands.push_back(declare(app));
    return commands;
}

} // namespace Velnor::Tool
