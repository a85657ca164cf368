#pragma once

#include <CLI/App.hpp>
#include <CLI/Formatter.hpp>

#include <string>

namespace Velnor::Tool {

/// Writes a command's help in lines of at most HELP_WIDTH characters.
class HelpFormatter : public CLI::Formatter {
public:
    std::string make_description(CLI::App const* app) const override;
    std::string make_footer(CLI::App const* app) const override;
    std::string make_subcommand(CLI::App const* command) const override;
    std::string make_option(CLI::Option const* option, bool isPositional) const override;
};

} // namespace Velnor::Tool
