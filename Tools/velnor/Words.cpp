#include "Tools/velnor/Words.h"

namespace Velnor::Tool {

std::string GetCommandName(CLI::App const& command) {
    CLI::App const* const parent = command.get_parent();
    if (parent == nullptr) return {};
    std::string const above = GetCommandName(*parent);
    return above.empty() ? command.get_name() : above + " " + command.get_name();
}

std::vector<CLI::App const*> GetShownCommands(CLI::App const& app) {
    return app.get_subcommands([](CLI::App const* command) { return !command->get_group().empty(); });
}

std::vector<CLI::App const*> GetRunnableCommands(CLI::App const& app) {
    std::vector<CLI::App const*> runnable;
    for (CLI::App const* const command : GetShownCommands(app)) {
        std::vector<CLI::App const*> const inner = GetRunnableCommands(*command);
        if (inner.empty()) runnable.push_back(command);
        runnable.insert(runnable.end(), inner.begin(), inner.end());
    }
    return runnable;
}

bool TakesValue(CLI::Option const& option) { return option.get_items_expected_max() > 0; }

CLI::Option const* FindOption(CLI::App const& command, std::string_view typed) {
    return command.get_option_no_throw(std::string(typed));
}

} // namespace Velnor::Tool
