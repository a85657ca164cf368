#include "Tools/velnor/HelpFormatter.h"

#include "Tools/velnor/TextWrap.h"

namespace Velnor::Tool {
namespace {

constexpr std::size_t MARGIN = 2;
constexpr std::size_t COLUMN = 26;

} // namespace

std::string HelpFormatter::make_description(CLI::App const* app) const {
    return WrapText(app->get_description()) + "\n";
}

std::string HelpFormatter::make_footer(CLI::App const* app) const { return WrapText(app->get_footer()) + "\n"; }

std::string HelpFormatter::make_subcommand(CLI::App const* command) const {
    return FormatEntry(command->get_name(), command->get_description(), MARGIN, COLUMN);
}

std::string HelpFormatter::make_option(CLI::Option const* option, bool isPositional) const {
    return FormatEntry(make_option_name(option, isPositional) + make_option_opts(option), make_option_desc(option),
                       MARGIN, COLUMN);
}

} // namespace Velnor::Tool
