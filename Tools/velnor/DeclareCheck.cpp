#include "Tools/check/Promises.h"
#include "Tools/velnor/CheckCommand.h"
#include "Tools/velnor/Command.h"
#include "Tools/velnor/OptionGroups.h"

#include <memory>

namespace Velnor::Tool {
namespace {

constexpr char const* INTRODUCTION =
    R"(Prints one line for each promise that an effect breaks: the effect, the promise, the first pixel format, size and
parameter, and what happened. Each effect is checked in a process of its own, which it may end.

Promises, each after the lowest level at which it is checked:
)";

std::string ListPromises() {
    constexpr std::size_t WIDTH = 14;
    std::string text;
    for (Proc::Check::Promise const& promise : Proc::Check::GetPromises()) {
        std::string name(promise.name);
        name.resize(WIDTH, ' ');
        text += "  " + std::to_string(promise.level) + "  " + name + std::string(promise.text) + "\n";
    }
    return text;
}

} // namespace

Command DeclareCheck(CLI::App& app) {
    auto const given = std::make_shared<CheckArguments>();
    CLI::App* const check =
        app.add_subcommand("check", "Check what every effect promises, on the effects of a plug-in");
    check->add_option("plugin", given->plugin, "Plug-in to check")->type_name("PLUGIN.so");
    check->add_option("--level", given->check.level, "How much is tried; 1 takes a second an effect")
        ->check(Within(1, 3))
        ->type_name("N")
        ->capture_default_str();
    check->add_option("--effect", given->check.effect, "Check this effect alone")->type_name("NAME");
    check->add_option("--skip", given->check.skipped, "Leave this promise out; may be repeated")
        ->type_name("PROMISE")
        ->allow_extra_args(false);
    check->add_option("--time-limit", given->timeLimit, "Seconds that one step may take before it counts as hanging")
        ->check(Within(1, 86400))
        ->type_name("N")
        ->capture_default_str();
    AddJsonOption(*check, given->asJson);
    check->allow_extras(); // Collected, so that the message about them is our own.
    check->footer(INTRODUCTION + ListPromises() + "\n" + EXIT_CODES);
    return {check, [given] { return RunCheck(*given); }};
}

} // namespace Velnor::Tool
